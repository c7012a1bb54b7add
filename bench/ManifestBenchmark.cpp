// Reading a manifest: decoding every record of every section, and decoding plus the semantic
// checks, for libraries of 125,000 to 1,000,000 records in the proportions of a photo library
// (items, resources and payload keys dominating). bench/manifest.sh runs each size alone and
// reports time, peak memory and the ratio per doubling.

#include <malloc.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"

namespace galdrine::bench {

namespace {

namespace Codec = format::BackupManifestRecordCodecV1;
using Kind = format::BackupManifestSectionKindV1;
using Record = format::BackupManifestRecordV1;
using Role = format::BackupMediaResourceRoleV1;

constexpr std::size_t sectionRecordCount = 4096;

struct Manifest {
  std::vector<format::BackupManifestSectionV1> sections;
  std::array<std::size_t, 7> recordCounts{};
  std::size_t canonicalByteCount = 0;
  Bytes packageIdentifier;
  Bytes libraryDomainIdentifier;
  Bytes bpmk;
};

template <typename Result>
auto required(Result result) {
  if (!result) {
    std::fprintf(stderr, "the generated manifest broke a rule\n");
    std::abort();
  }
  return std::move(*result);
}

// LibraryGenerator writes a library item by item: of every 20 items, 15 photos in packs of
// 32 resources, 2 live photos (two packed resources each) and 3 videos in three 1 MiB chunks
// with a key each; every second item in an album, a tombstone every tenth, an album every 200
// items and a folder every 1,000, folders three deep.
class LibraryGenerator {
 public:
  LibraryGenerator() : package_(identifier()), domain_(identifier()), bpmk_(identifier()) {
    bpmk_.insert(bpmk_.end(), package_.begin(), package_.end());
  }

  Manifest generate(std::size_t recordCount) {
    for (std::uint64_t item = 0; total() < recordCount; ++item) addItem(item);
    return manifest();
  }

 private:
  // identifier gives distinct identifiers in no particular order, as random ones would be.
  Bytes identifier() {
    Bytes bytes(16);
    for (std::size_t half = 0; half < 2; ++half) {
      std::uint64_t value = ++counter_ * 0x9E3779B97F4A7C15ULL + half;
      value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
      value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
      value ^= value >> 31;
      for (std::size_t index = 0; index < 8; ++index)
        bytes[half * 8 + index] = static_cast<std::uint8_t>(value >> (8 * index));
    }
    return bytes;
  }

  std::size_t total() const {
    std::size_t sum = 0;
    for (const auto& records : byKind_) sum += records.size();
    return sum;
  }

  void add(Record record) { byKind_[static_cast<std::size_t>(record.kind())].push_back(std::move(record)); }

  Bytes wrappedKey(format::BackupPayloadKeyScopeV1 scope, ByteView bound) {
    Bytes keyIdentifier = identifier();
    add(required(Codec::wrapPayloadKey(keyBytes(), keyIdentifier, scope, bound, package_, domain_, bpmk_)));
    return keyIdentifier;
  }

  Bytes keyBytes() {
    Bytes key = identifier();
    const Bytes more = identifier();
    key.insert(key.end(), more.begin(), more.end());
    return key;
  }

  void addItem(std::uint64_t item) {
    if (item % 1000 == 0) addFolder(item / 1000);
    if (item % 200 == 0) addAlbum();
    const Bytes itemIdentifier = identifier();
    const std::uint64_t kindOfItem = item % 20;
    std::vector<Bytes> resources;
    if (kindOfItem < 15) {
      resources.push_back(addPackedResource(itemIdentifier, Role::primary));
    } else if (kindOfItem < 17) {
      resources.push_back(addPackedResource(itemIdentifier, Role::primary));
      resources.push_back(addPackedResource(itemIdentifier, Role::pairedVideo));
    } else {
      resources.push_back(addChunkedResource(itemIdentifier));
    }
    std::ranges::sort(resources, ByteOrder::precedes);
    const auto kind = kindOfItem < 15   ? format::BackupMediaKindV1::photo
                      : kindOfItem < 17 ? format::BackupMediaKindV1::livePhoto
                                        : format::BackupMediaKindV1::video;
    addItemRecord(itemIdentifier, kind, resources, item);
    if (item % 2 == 0) addMembership(itemIdentifier, item);
    if (item % 10 == 0) addTombstone();
  }

  void addItemRecord(const Bytes& itemIdentifier, format::BackupMediaKindV1 kind, const std::vector<Bytes>& resources,
                     std::uint64_t item) {
    const std::vector<ByteView> views(resources.begin(), resources.end());
    const std::string name =
        "IMG_" + std::to_string(item) + (kind == format::BackupMediaKindV1::video ? ".MOV" : ".HEIC");
    add(required(format::BackupMediaItemRecordV1::make({
        .identifier = itemIdentifier,
        .kind = kind,
        .displayDateUTCMilliseconds = 1500000000000 + static_cast<std::int64_t>(item) * 60000,
        .displayTimeZoneSeconds = 7200,
        .dateSource = format::BackupMediaDateSourceV1::embedded,
        .importDateUTCMilliseconds = 1700000000000 + static_cast<std::int64_t>(item),
        .originalFilename = name,
        .favorite = item % 7 == 0,
        .lifecycle = format::BackupMediaLifecycleV1::active,
        .trashDateUTCMilliseconds = std::nullopt,
        .sourceType = format::BackupMediaSourceTypeV1::photos,
        .entitlementCounted = true,
        .resourceIdentifiers = views,
    })));
  }

  Bytes addPackedResource(const Bytes& itemIdentifier, Role role) {
    if (packSlot_ == 32 || pack_.empty()) {
      pack_ = identifier();
      packDigest_ = keyBytes();
      packKey_ = wrappedKey(format::BackupPayloadKeyScopeV1::pack, pack_);
      packSlot_ = 0;
    }
    const Bytes resourceIdentifier = identifier();
    const Bytes digest = keyBytes();
    const std::uint64_t byteCount = role == Role::primary ? 900000 : 1200000;
    const auto part = required(format::BackupPayloadPartRecordV1::make({
        .ordinal = 0,
        .plaintextOffset = 0,
        .plaintextByteCount = byteCount,
        .plaintextSHA256 = digest,
        .container = format::BackupPayloadContainerKindV1::pack,
        .artifactIdentifier = pack_,
        .artifactOrdinal = packSlot_++,
        .artifactFileByteCount = 33554432,
        .artifactFileSHA256 = packDigest_,
    }));
    addResourceRecord(resourceIdentifier, itemIdentifier, role, byteCount, digest, packKey_, {&part, 1});
    return resourceIdentifier;
  }

  Bytes addChunkedResource(const Bytes& itemIdentifier) {
    constexpr std::uint64_t chunkByteCount = 1048576;
    const Bytes resourceIdentifier = identifier();
    const Bytes key = wrappedKey(format::BackupPayloadKeyScopeV1::resource, resourceIdentifier);
    std::vector<format::BackupPayloadPartRecordV1> parts;
    for (std::uint64_t ordinal = 0; ordinal < 3; ++ordinal) {
      const Bytes chunk = identifier();
      const Bytes digest = keyBytes();
      parts.push_back(required(format::BackupPayloadPartRecordV1::make({
          .ordinal = ordinal,
          .plaintextOffset = ordinal * chunkByteCount,
          .plaintextByteCount = chunkByteCount,
          .plaintextSHA256 = digest,
          .container = format::BackupPayloadContainerKindV1::chunk,
          .artifactIdentifier = chunk,
          .artifactOrdinal = ordinal,
          .artifactFileByteCount = chunkByteCount + 140,
          .artifactFileSHA256 = digest,
      })));
    }
    addResourceRecord(resourceIdentifier, itemIdentifier, Role::primary, 3 * chunkByteCount, keyBytes(), key, parts);
    return resourceIdentifier;
  }

  void addResourceRecord(const Bytes& resourceIdentifier, const Bytes& itemIdentifier, Role role,
                         std::uint64_t byteCount, const Bytes& digest, const Bytes& key,
                         std::span<const format::BackupPayloadPartRecordV1> parts) {
    add(required(format::BackupMediaResourceRecordV1::make({
        .identifier = resourceIdentifier,
        .itemIdentifier = itemIdentifier,
        .role = role,
        .originalUTI = role == Role::pairedVideo || parts.size() > 1 ? "com.apple.quicktime-movie" : "public.heic",
        .plaintextByteCount = byteCount,
        .pixelWidth = 4032,
        .pixelHeight = 3024,
        .durationIEEE754Bits = parts.size() > 1 ? std::optional<std::uint64_t>(0x4024000000000000) : std::nullopt,
        .plaintextSHA256 = digest,
        .payloadKeyIdentifier = key,
        .parts = parts,
    })));
  }

  void addFolder(std::uint64_t index) {
    const Bytes folder = identifier();
    const std::optional<ByteView> parent =
        index % 3 == 0 || folder_.empty() ? std::nullopt : std::optional<ByteView>(folder_);
    add(required(format::BackupAlbumFolderRecordV1::make({.identifier = folder,
                                                          .parentFolderIdentifier = parent,
                                                          .name = "Years",
                                                          .manualPosition = static_cast<std::int64_t>(index)})));
    folder_ = folder;
  }

  void addAlbum() {
    album_ = identifier();
    add(required(format::BackupAlbumRecordV1::make({
        .identifier = album_,
        .parentFolderIdentifier = folder_,
        .name = "Holidays",
        .coverItemIdentifier = std::nullopt,
        .sortMode = format::BackupAlbumSortModeV1::displayDateAscending,
        .manualOrderEnabled = false,
        .manualPosition = 0,
    })));
  }

  void addMembership(const Bytes& itemIdentifier, std::uint64_t item) {
    add(required(format::BackupAlbumMembershipRecordV1::make({.albumIdentifier = album_,
                                                              .itemIdentifier = itemIdentifier,
                                                              .manualPosition = static_cast<std::int64_t>(item),
                                                              .addedAtUTCMilliseconds = 1700000000000})));
  }

  void addTombstone() {
    const Bytes deletedItem = identifier();
    const Bytes deletedResource = identifier();
    const ByteView resources[] = {deletedResource};
    add(required(format::BackupTombstoneRecordV1::make(
        {.itemIdentifier = deletedItem, .deletedAtUTCMilliseconds = 1710000000000, .resourceIdentifiers = resources})));
  }

  // manifest sorts each kind by sort key and cuts it into sections of 4,096 records. The
  // sections are encoded, and read back only once every record written has been let go, as a
  // reader decodes them from opened frames: so their bytes lie in memory as they would there.
  Manifest manifest() {
    const Bytes manifestIdentifier = identifier();
    std::vector<Bytes> plaintexts;
    std::array<std::size_t, 7> recordCounts{};
    for (std::size_t kind = 0; kind < byKind_.size(); ++kind) {
      auto& records = byKind_[kind];
      recordCounts[kind] = records.size();
      std::ranges::sort(records, [](const Record& left, const Record& right) {
        return ByteOrder::precedes(left.sortKey(), right.sortKey());
      });
      for (std::size_t first = 0; first < records.size(); first += sectionRecordCount) {
        const std::size_t count = std::min(sectionRecordCount, records.size() - first);
        const auto section =
            required(Codec::makeSection(identifier(), manifestIdentifier, domain_, plaintexts.size(),
                                        static_cast<Kind>(kind), std::span(records).subspan(first, count)));
        plaintexts.push_back(required(section.encoded()));
      }
      records = {};
    }
    Manifest manifest{.sections = {},
                      .recordCounts = recordCounts,
                      .canonicalByteCount = 0,
                      .packageIdentifier = package_,
                      .libraryDomainIdentifier = domain_,
                      .bpmk = bpmk_};
    manifest.sections.reserve(plaintexts.size());
    for (Bytes& plaintext : plaintexts) {
      manifest.sections.push_back(required(format::BackupManifestSectionV1::decode(plaintext)));
      for (const auto& blob : manifest.sections.back().records())
        manifest.canonicalByteCount += blob.canonicalRecord().size();
      plaintext = {};
    }
    return manifest;
  }

  std::uint64_t counter_ = 0;
  Bytes package_;
  Bytes domain_;
  Bytes bpmk_;
  std::array<std::vector<Record>, 7> byKind_;
  Bytes pack_;
  Bytes packDigest_;
  Bytes packKey_;
  std::uint64_t packSlot_ = 0;
  Bytes folder_;
  Bytes album_;
};

const Manifest& manifestOf(std::size_t recordCount) {
  static std::map<std::size_t, std::unique_ptr<Manifest>> manifests;
  auto& manifest = manifests[recordCount];
  if (!manifest) manifest = std::make_unique<Manifest>(LibraryGenerator().generate(recordCount));
  return *manifest;
}

// statusMegabytes reads one line of /proc/self/status, such as VmRSS or VmHWM (the peak).
double statusMegabytes(std::string_view field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with(field) && line.size() > field.size() && line[field.size()] == ':')
      return std::stod(line.substr(field.size() + 1)) / 1024.0;  // the value is in kB
  }
  return 0;
}

// startMeasuringMemory gives freed memory back and restarts the peak at what is resident now,
// so that the peak read afterwards is that of reading alone, beside the manifest held.
double startMeasuringMemory() {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";
  return statusMegabytes("VmRSS");
}

void describe(benchmark::State& state, const Manifest& manifest, double heldMegabytes) {
  std::size_t records = 0;
  for (const std::size_t count : manifest.recordCounts) records += count;
  state.counters["records"] = static_cast<double>(records);
  state.counters["keys"] = static_cast<double>(manifest.recordCounts[0]);
  state.counters["items"] = static_cast<double>(manifest.recordCounts[1]);
  state.counters["resources"] = static_cast<double>(manifest.recordCounts[2]);
  state.counters["sections"] = static_cast<double>(manifest.sections.size());
  state.counters["recordMB"] = static_cast<double>(manifest.canonicalByteCount) / 1048576.0;
  state.counters["heldMB"] = heldMegabytes;
  state.counters["peakMB"] = statusMegabytes("VmHWM");
  state.counters["nsPerRecord"] = benchmark::Counter(
      static_cast<double>(records), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void decodeRecords(benchmark::State& state) {
  const Manifest& manifest = manifestOf(static_cast<std::size_t>(state.range(0)));
  const double heldMegabytes = startMeasuringMemory();
  for (auto _ : state) {
    std::size_t decoded = 0;
    for (const auto& section : manifest.sections) {
      const auto records = Codec::records(section);
      if (!records) state.SkipWithError("a section was refused");
      decoded += records ? records->size() : 0;
    }
    benchmark::DoNotOptimize(decoded);
  }
  describe(state, manifest, heldMegabytes);
}

void decodeAndValidate(benchmark::State& state) {
  const Manifest& manifest = manifestOf(static_cast<std::size_t>(state.range(0)));
  const double heldMegabytes = startMeasuringMemory();
  for (auto _ : state) {
    const auto summary = Codec::validateAndSummarize(manifest.sections, manifest.packageIdentifier,
                                                     manifest.libraryDomainIdentifier, manifest.bpmk);
    if (!summary) {
      const std::string reason = "the manifest was refused: " + std::to_string(static_cast<int>(summary.error()));
      state.SkipWithError(reason.c_str());
    }
    benchmark::DoNotOptimize(summary);
  }
  describe(state, manifest, heldMegabytes);
}

}  // namespace

// The machine is shared, so each size runs several times and the fastest run counts: other
// programs can only slow a run down.
void sizes(benchmark::internal::Benchmark* benchmark) {
  for (const std::int64_t recordCount : {125000, 250000, 500000, 1000000}) benchmark->Arg(recordCount);
  benchmark->Unit(benchmark::kMillisecond)
      ->Repetitions(5)
      ->ComputeStatistics("min", [](const std::vector<double>& values) { return *std::ranges::min_element(values); });
}

BENCHMARK(decodeRecords)->Apply(sizes)->Iterations(1);
BENCHMARK(decodeAndValidate)->Apply(sizes)->Iterations(1);

}  // namespace galdrine::bench
