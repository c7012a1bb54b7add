// Planning the names of a large export: a library of live photos (two resources each) whose
// names repeat, so that every step of a name, collisions included, is paid for. The export
// may hold up to 2,000,000 records; the time per resource here tells what planning adds to it.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "recovery/export/ExportModel.hpp"
#include "recovery/export/ResourcePlan.hpp"

namespace galdrine::bench {

namespace {

constexpr std::size_t kItemCount = 50000;

Bytes numbered(std::uint64_t number, std::size_t byteCount) {
  Bytes bytes(byteCount, 0xA5);
  for (std::size_t index = 0; index < 8; ++index) bytes[index] = static_cast<std::uint8_t>(number >> (56 - 8 * index));
  return bytes;
}

template <typename Result>
auto made(Result result) {
  if (!result) std::abort();
  return std::move(*result);
}

format::BackupMediaResourceRecordV1 resource(std::uint64_t number, std::uint64_t item, const char* type,
                                             format::BackupMediaResourceRoleV1 role) {
  const Bytes digest = numbered(number, 32);
  const Bytes artifact = numbered(number + 1, 16);
  const auto part = made(format::BackupPayloadPartRecordV1::make(
      {0, 0, 1000, digest, format::BackupPayloadContainerKindV1::pack, artifact, 0, 2000, digest}));
  return made(format::BackupMediaResourceRecordV1::make({numbered(number, 16), numbered(item, 16), role, type, 1000,
                                                         std::nullopt, std::nullopt, std::nullopt, digest,
                                                         numbered(7, 16), std::span(&part, 1)}));
}

std::vector<format::BackupManifestRecordV1> library() {
  std::vector<format::BackupManifestRecordV1> records;
  for (std::uint64_t item = 1; item <= kItemCount; ++item) {
    const Bytes still = numbered(item * 4 + 1, 16);
    const Bytes movie = numbered(item * 4 + 2, 16);
    const ByteView resources[] = {still, movie};
    const std::string name = "IMG_" + std::to_string(item % 1000) + ".HEIC";  // each name fifty times
    records.emplace_back(made(format::BackupMediaItemRecordV1::make(
        {numbered(item * 4, 16), format::BackupMediaKindV1::livePhoto, 0, std::nullopt,
         format::BackupMediaDateSourceV1::camera, 0, name, false, format::BackupMediaLifecycleV1::active, std::nullopt,
         format::BackupMediaSourceTypeV1::photos, false, resources})));
    records.emplace_back(resource(item * 4 + 1, item * 4, "public.heic", format::BackupMediaResourceRoleV1::primary));
    records.emplace_back(
        resource(item * 4 + 2, item * 4, "com.apple.quicktime-movie", format::BackupMediaResourceRoleV1::pairedVideo));
  }
  return records;
}

void planOfLivePhotos(benchmark::State& state) {
  const auto records = library();
  const auto model = recovery::exportModel(records);
  if (!model) std::abort();
  for (auto _ : state) {
    auto plan = recovery::resourcePlan(*model);
    if (!plan) std::abort();
    benchmark::DoNotOptimize(plan);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(model->resources.size()));
}

void modelOfLivePhotos(benchmark::State& state) {
  const auto records = library();
  for (auto _ : state) {
    auto model = recovery::exportModel(records);
    if (!model) std::abort();
    benchmark::DoNotOptimize(model);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(records.size()));
}

}  // namespace

BENCHMARK(planOfLivePhotos)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(modelOfLivePhotos)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace galdrine::bench
