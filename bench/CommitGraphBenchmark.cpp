// Scanning the largest commit graph a package may hold: 20,000 commits, once as one chain and
// once as 100 branches of 200 commits under one root, each branch tip reached by a head.
// Building the records is outside the measured loop.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "format/graph/BackupCommitGraph.hpp"

namespace galdrine::bench {

namespace {

using Reference = format::BackupArtifactReferenceV1;
using Commit = format::AuthenticatedBackupCommit;
using Head = format::AuthenticatedBackupHead;

constexpr std::uint32_t kCommitCount = 20'000;

template <typename Value, typename Error>
Value take(std::expected<Value, Error> result) {
  if (!result) std::abort();
  return std::move(*result);
}

Bytes identifier(std::uint32_t number, std::uint8_t prefix) {
  Bytes bytes(16, 0);
  bytes[0] = prefix;
  for (std::size_t index = 0; index < 4; ++index) bytes[15 - index] = static_cast<std::uint8_t>(number >> (8 * index));
  return bytes;
}

Reference referenceTo(std::uint32_t number, std::uint8_t prefix = 0xC0) {
  return take(Reference::make(identifier(number, prefix), 400 + number, Bytes(32, 1), 300 + number, Bytes(32, 2)));
}

Commit commit(std::uint32_t number, std::optional<std::uint32_t> parent, std::uint64_t generation) {
  std::optional<Reference> parentReference;
  if (parent) parentReference = referenceTo(*parent);
  auto record = take(format::BackupCommitV1::make(identifier(number, 0xC0), Bytes(16, 0x11), parentReference,
                                                  referenceTo(number, 0x50), Bytes(16, 0x33), Bytes(16, 0x44), 0,
                                                  generation, 1'700'000'000'000, Bytes(32, 9), {}));
  return take(Commit::make(referenceTo(number), std::move(record)));
}

Head headOn(std::uint32_t number, std::uint32_t commitNumber) {
  auto record =
      take(format::BackupHeadV1::make(identifier(number, 0x40), Bytes(16, 0x11), referenceTo(commitNumber), 0));
  return take(Head::make(referenceTo(number, 0x40), std::move(record)));
}

void scanAndCheck(benchmark::State& state, const std::vector<Commit>& commits, const std::vector<Head>& heads,
                  std::size_t expectedTipCount) {
  for (auto _ : state) {
    auto scan = format::BackupCommitGraph::scan(commits, heads);
    if (!scan || scan->retainedTips.size() != expectedTipCount) {
      state.SkipWithError("the scan did not give the expected tips");
      return;
    }
    benchmark::DoNotOptimize(scan);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(commits.size()));
}

void BM_ScanOneChain(benchmark::State& state) {
  std::vector<Commit> commits;
  commits.reserve(kCommitCount);
  commits.push_back(commit(0, std::nullopt, 0));
  for (std::uint32_t number = 1; number < kCommitCount; ++number) commits.push_back(commit(number, number - 1, number));
  const std::vector<Head> heads{headOn(0, kCommitCount - 1)};
  scanAndCheck(state, commits, heads, 1);
}

void BM_ScanHundredBranches(benchmark::State& state) {
  constexpr std::uint32_t branchCount = 100;
  constexpr std::uint32_t branchLength = (kCommitCount - 1) / branchCount;  // 199 below the shared root
  std::vector<Commit> commits;
  std::vector<Head> heads;
  commits.reserve(kCommitCount);
  commits.push_back(commit(0, std::nullopt, 0));
  std::uint32_t number = 1;
  for (std::uint32_t branch = 0; branch < branchCount; ++branch) {
    std::uint32_t parent = 0;
    for (std::uint32_t generation = 1; generation <= branchLength; ++generation, ++number) {
      commits.push_back(commit(number, parent, generation));
      parent = number;
    }
    heads.push_back(headOn(branch, parent));
  }
  scanAndCheck(state, commits, heads, branchCount);
}

}  // namespace

BENCHMARK(BM_ScanOneChain)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScanHundredBranches)->Unit(benchmark::kMillisecond);

}  // namespace galdrine::bench
