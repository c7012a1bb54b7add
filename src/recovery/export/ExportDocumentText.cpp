#include "recovery/export/ExportDocumentText.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "platform/JSONText.hpp"
#include "platform/SHA256.hpp"
#include "recovery/export/RecoveryOutputFile.hpp"

namespace galdrine::recovery {

namespace {

using JSON = nlohmann::json;
using Error = RecoveryExporterError;

// ---- Writing ----

// put adds `key` only for a present value: an absent optional leaves no key, never a null.
template <typename Value>
void put(JSON& object, const char* key, const std::optional<Value>& value) {
  if (value) object[key] = *value;
}

template <typename Row, typename Convert>
JSON listOf(const std::vector<Row>& rows, Convert convert) {
  JSON list = JSON::array();
  for (const Row& row : rows) list.push_back(convert(row));
  return list;
}

JSON toJSON(const MappingV1::Folder& folder) {
  JSON object = {{"identifier", folder.identifier}, {"name", folder.name}, {"manualPosition", folder.manualPosition}};
  put(object, "parentIdentifier", folder.parentIdentifier);
  return object;
}

JSON toJSON(const MappingV1::Album& album) {
  JSON object = {{"identifier", album.identifier},
                 {"name", album.name},
                 {"sortMode", album.sortMode},
                 {"manualOrderEnabled", album.manualOrderEnabled},
                 {"manualPosition", album.manualPosition}};
  put(object, "parentFolderIdentifier", album.parentFolderIdentifier);
  put(object, "coverItemIdentifier", album.coverItemIdentifier);
  return object;
}

JSON toJSON(const MappingV1::Membership& membership) {
  return {{"albumIdentifier", membership.albumIdentifier},
          {"itemIdentifier", membership.itemIdentifier},
          {"manualPosition", membership.manualPosition},
          {"addedAtUTCMilliseconds", membership.addedAtUTCMilliseconds}};
}

JSON toJSON(const MappingV1::Resource& resource) {
  JSON object = {{"identifier", resource.identifier},
                 {"role", resource.role},
                 {"originalUTI", resource.originalUTI},
                 {"plaintextByteCount", resource.plaintextByteCount},
                 {"expectedPlaintextSHA256", resource.expectedPlaintextSHA256},
                 {"plannedRelativePath", resource.plannedRelativePath},
                 {"recovered", resource.recovered}};
  put(object, "pixelWidth", resource.pixelWidth);
  put(object, "pixelHeight", resource.pixelHeight);
  put(object, "durationSeconds", resource.durationSeconds);
  put(object, "recoveredSHA256", resource.recoveredSHA256);
  return object;
}

JSON toJSON(const MappingV1::Item& item) {
  JSON object = {{"identifier", item.identifier},
                 {"kind", item.kind},
                 {"displayDateUTCMilliseconds", item.displayDateUTCMilliseconds},
                 {"dateSource", item.dateSource},
                 {"importDateUTCMilliseconds", item.importDateUTCMilliseconds},
                 {"originalFilename", item.originalFilename},
                 {"favorite", item.favorite},
                 {"lifecycle", item.lifecycle},
                 {"sourceType", item.sourceType},
                 {"entitlementCounted", item.entitlementCounted},
                 {"status", item.status},
                 {"resources", listOf(item.resources, [](const auto& row) { return toJSON(row); })}};
  put(object, "displayTimeZoneSeconds", item.displayTimeZoneSeconds);
  put(object, "trashDateUTCMilliseconds", item.trashDateUTCMilliseconds);
  return object;
}

JSON toJSON(const MappingV1::Tombstone& tombstone) {
  return {{"itemIdentifier", tombstone.itemIdentifier},
          {"deletedAtUTCMilliseconds", tombstone.deletedAtUTCMilliseconds},
          {"resourceIdentifiers", tombstone.resourceIdentifiers}};
}

JSON toJSON(const MappingV1& document) {
  const auto row = [](const auto& value) { return toJSON(value); };
  return {{"schemaIdentifier", document.schemaIdentifier},
          {"backupFormatIdentifier", document.backupFormatIdentifier},
          {"backupFormatVersion", document.backupFormatVersion},
          {"selectedCommitIdentifier", document.selectedCommitIdentifier},
          {"selectedSnapshotIdentifier", document.selectedSnapshotIdentifier},
          {"snapshotCreatedAtUTCMilliseconds", document.snapshotCreatedAtUTCMilliseconds},
          {"folderStrategy", document.folderStrategy},
          {"folders", listOf(document.folders, row)},
          {"albums", listOf(document.albums, row)},
          {"memberships", listOf(document.memberships, row)},
          {"items", listOf(document.items, row)},
          {"tombstones", listOf(document.tombstones, row)}};
}

JSON toJSON(const ReportV1::Failure& failure) {
  JSON object = {{"itemIdentifier", failure.itemIdentifier},
                 {"resourceIdentifier", failure.resourceIdentifier},
                 {"reason", failure.reason}};
  put(object, "payloadArtifactIdentifier", failure.payloadArtifactIdentifier);
  return object;
}

JSON toJSON(const ReportV1& document) {
  return {{"schemaIdentifier", document.schemaIdentifier},
          {"status", document.status},
          {"selectedCommitIdentifier", document.selectedCommitIdentifier},
          {"selectedSnapshotIdentifier", document.selectedSnapshotIdentifier},
          {"totalItemCount", document.totalItemCount},
          {"recoveredItemCount", document.recoveredItemCount},
          {"totalResourceCount", document.totalResourceCount},
          {"recoveredResourceCount", document.recoveredResourceCount},
          {"failedResourceCount", document.failedResourceCount},
          {"failures", listOf(document.failures, [](const auto& row) { return toJSON(row); })}};
}

// JSON has no spelling for an infinity or a NaN; the encoder would write null instead.
bool hasOnlyFiniteDurations(const MappingV1& document) {
  for (const auto& item : document.items) {
    for (const auto& resource : item.resources) {
      if (resource.durationSeconds && !std::isfinite(*resource.durationSeconds)) return false;
    }
  }
  return true;
}

std::expected<std::string, Error> encoded(const JSON& json) {
  auto text = platform::JSONText::encoded(json);
  if (!text) return std::unexpected(Error::integrityFailure);
  return std::move(*text);
}

// ---- Reading ----

// ObjectReader reads the fields of one JSON object and keeps the first problem it meets; after
// a problem every read gives a neutral value, and the caller looks at problem() once at the end.
class ObjectReader {
 public:
  explicit ObjectReader(const JSON& object) : object_(object) {
    if (!object.is_object()) fail(platform::JSONDocumentError::typeMismatch);
  }

  [[nodiscard]] std::optional<platform::JSONDocumentError> problem() const { return problem_; }

  std::string text(const char* key) { return required(key, &ObjectReader::textOf); }
  bool boolean(const char* key) { return required(key, &ObjectReader::booleanOf); }
  std::int64_t signedInteger(const char* key) { return required(key, &ObjectReader::signedIntegerOf); }
  std::uint64_t unsignedInteger(const char* key) { return required(key, &ObjectReader::unsignedIntegerOf); }

  std::optional<std::string> optionalText(const char* key) { return optional(key, &ObjectReader::textOf); }
  std::optional<std::int64_t> optionalSignedInteger(const char* key) {
    return optional(key, &ObjectReader::signedIntegerOf);
  }
  std::optional<std::uint64_t> optionalUnsignedInteger(const char* key) {
    return optional(key, &ObjectReader::unsignedIntegerOf);
  }
  std::optional<double> optionalNumber(const char* key) { return optional(key, &ObjectReader::numberOf); }

  // list reads an array whose elements `readElement` turns into rows, each from its own reader.
  template <typename Row>
  std::vector<Row> list(const char* key, Row (*readElement)(ObjectReader&)) {
    std::vector<Row> rows;
    const JSON* value = present(key, true);
    if (value == nullptr) return rows;
    if (!value->is_array()) {
      fail(platform::JSONDocumentError::typeMismatch);
      return rows;
    }
    for (const JSON& element : *value) {
      ObjectReader reader(element);
      Row row = readElement(reader);
      if (reader.problem()) {
        fail(*reader.problem());
        return rows;
      }
      rows.push_back(std::move(row));
    }
    return rows;
  }

  std::vector<std::string> textList(const char* key) {
    std::vector<std::string> texts;
    const JSON* value = present(key, true);
    if (value == nullptr) return texts;
    if (!value->is_array()) {
      fail(platform::JSONDocumentError::typeMismatch);
      return texts;
    }
    for (const JSON& element : *value) texts.push_back(textOf(element));
    return texts;
  }

 private:
  template <typename Value>
  Value required(const char* key, Value (ObjectReader::*read)(const JSON&)) {
    const JSON* value = present(key, true);
    return value == nullptr ? Value{} : (this->*read)(*value);
  }

  // A key that is absent or null gives nothing, as an absent optional is written.
  template <typename Value>
  std::optional<Value> optional(const char* key, Value (ObjectReader::*read)(const JSON&)) {
    const JSON* value = present(key, false);
    if (value == nullptr) return std::nullopt;
    return (this->*read)(*value);
  }

  const JSON* present(const char* key, bool isRequired) {
    if (problem_ || !object_.is_object()) return nullptr;
    const auto found = object_.find(key);
    if (found == object_.end() || found->is_null()) {
      if (isRequired) {
        fail(found == object_.end() ? platform::JSONDocumentError::keyNotFound
                                    : platform::JSONDocumentError::valueNotFound);
      }
      return nullptr;
    }
    return &*found;
  }

  std::string textOf(const JSON& value) {
    if (!value.is_string()) {
      fail(platform::JSONDocumentError::typeMismatch);
      return std::string();
    }
    return value.get_ref<const std::string&>();
  }

  bool booleanOf(const JSON& value) {
    if (!value.is_boolean()) {
      fail(platform::JSONDocumentError::typeMismatch);
      return false;
    }
    return value.get<bool>();
  }

  std::int64_t signedIntegerOf(const JSON& value) {
    if (value.is_number_unsigned()) {
      const auto number = value.get<std::uint64_t>();
      if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return static_cast<std::int64_t>(number);
      }
      fail(platform::JSONDocumentError::dataCorrupted);
      return 0;
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    failNotInteger(value);
    return 0;
  }

  std::uint64_t unsignedIntegerOf(const JSON& value) {
    if (value.is_number_unsigned()) return value.get<std::uint64_t>();
    failNotInteger(value);
    return 0;
  }

  double numberOf(const JSON& value) {
    if (!value.is_number()) {
      fail(platform::JSONDocumentError::typeMismatch);
      return 0.0;
    }
    return value.get<double>();
  }

  // A number the field cannot hold exactly (negative, fractional, too large) is damaged data;
  // anything else is of the wrong type.
  void failNotInteger(const JSON& value) {
    fail(value.is_number() ? platform::JSONDocumentError::dataCorrupted : platform::JSONDocumentError::typeMismatch);
  }

  void fail(platform::JSONDocumentError problem) {
    if (!problem_) problem_ = problem;
  }

  const JSON& object_;
  std::optional<platform::JSONDocumentError> problem_;
};

MappingV1::Folder readFolder(ObjectReader& reader) {
  MappingV1::Folder row;
  row.identifier = reader.text("identifier");
  row.parentIdentifier = reader.optionalText("parentIdentifier");
  row.name = reader.text("name");
  row.manualPosition = reader.signedInteger("manualPosition");
  return row;
}

MappingV1::Album readAlbum(ObjectReader& reader) {
  MappingV1::Album row;
  row.identifier = reader.text("identifier");
  row.parentFolderIdentifier = reader.optionalText("parentFolderIdentifier");
  row.name = reader.text("name");
  row.coverItemIdentifier = reader.optionalText("coverItemIdentifier");
  row.sortMode = reader.text("sortMode");
  row.manualOrderEnabled = reader.boolean("manualOrderEnabled");
  row.manualPosition = reader.signedInteger("manualPosition");
  return row;
}

MappingV1::Membership readMembership(ObjectReader& reader) {
  MappingV1::Membership row;
  row.albumIdentifier = reader.text("albumIdentifier");
  row.itemIdentifier = reader.text("itemIdentifier");
  row.manualPosition = reader.signedInteger("manualPosition");
  row.addedAtUTCMilliseconds = reader.signedInteger("addedAtUTCMilliseconds");
  return row;
}

MappingV1::Resource readResource(ObjectReader& reader) {
  MappingV1::Resource row;
  row.identifier = reader.text("identifier");
  row.role = reader.text("role");
  row.originalUTI = reader.text("originalUTI");
  row.plaintextByteCount = reader.unsignedInteger("plaintextByteCount");
  row.pixelWidth = reader.optionalUnsignedInteger("pixelWidth");
  row.pixelHeight = reader.optionalUnsignedInteger("pixelHeight");
  row.durationSeconds = reader.optionalNumber("durationSeconds");
  row.expectedPlaintextSHA256 = reader.text("expectedPlaintextSHA256");
  row.plannedRelativePath = reader.text("plannedRelativePath");
  row.recovered = reader.boolean("recovered");
  row.recoveredSHA256 = reader.optionalText("recoveredSHA256");
  return row;
}

MappingV1::Item readItem(ObjectReader& reader) {
  MappingV1::Item row;
  row.identifier = reader.text("identifier");
  row.kind = reader.text("kind");
  row.displayDateUTCMilliseconds = reader.signedInteger("displayDateUTCMilliseconds");
  row.displayTimeZoneSeconds = reader.optionalSignedInteger("displayTimeZoneSeconds");
  row.dateSource = reader.text("dateSource");
  row.importDateUTCMilliseconds = reader.signedInteger("importDateUTCMilliseconds");
  row.originalFilename = reader.text("originalFilename");
  row.favorite = reader.boolean("favorite");
  row.lifecycle = reader.text("lifecycle");
  row.trashDateUTCMilliseconds = reader.optionalSignedInteger("trashDateUTCMilliseconds");
  row.sourceType = reader.text("sourceType");
  row.entitlementCounted = reader.boolean("entitlementCounted");
  row.status = reader.text("status");
  row.resources = reader.list("resources", &readResource);
  return row;
}

MappingV1::Tombstone readTombstone(ObjectReader& reader) {
  MappingV1::Tombstone row;
  row.itemIdentifier = reader.text("itemIdentifier");
  row.deletedAtUTCMilliseconds = reader.signedInteger("deletedAtUTCMilliseconds");
  row.resourceIdentifiers = reader.textList("resourceIdentifiers");
  return row;
}

MappingV1 readMapping(ObjectReader& reader) {
  MappingV1 document;
  document.schemaIdentifier = reader.text("schemaIdentifier");
  document.backupFormatIdentifier = reader.text("backupFormatIdentifier");
  document.backupFormatVersion = reader.unsignedInteger("backupFormatVersion");
  document.selectedCommitIdentifier = reader.text("selectedCommitIdentifier");
  document.selectedSnapshotIdentifier = reader.text("selectedSnapshotIdentifier");
  document.snapshotCreatedAtUTCMilliseconds = reader.signedInteger("snapshotCreatedAtUTCMilliseconds");
  document.folderStrategy = reader.text("folderStrategy");
  document.folders = reader.list("folders", &readFolder);
  document.albums = reader.list("albums", &readAlbum);
  document.memberships = reader.list("memberships", &readMembership);
  document.items = reader.list("items", &readItem);
  document.tombstones = reader.list("tombstones", &readTombstone);
  return document;
}

ReportV1::Failure readFailure(ObjectReader& reader) {
  ReportV1::Failure row;
  row.itemIdentifier = reader.text("itemIdentifier");
  row.resourceIdentifier = reader.text("resourceIdentifier");
  row.payloadArtifactIdentifier = reader.optionalText("payloadArtifactIdentifier");
  row.reason = reader.text("reason");
  return row;
}

ReportV1 readReport(ObjectReader& reader) {
  ReportV1 document;
  document.schemaIdentifier = reader.text("schemaIdentifier");
  document.status = reader.text("status");
  document.selectedCommitIdentifier = reader.text("selectedCommitIdentifier");
  document.selectedSnapshotIdentifier = reader.text("selectedSnapshotIdentifier");
  document.totalItemCount = reader.signedInteger("totalItemCount");
  document.recoveredItemCount = reader.signedInteger("recoveredItemCount");
  document.totalResourceCount = reader.signedInteger("totalResourceCount");
  document.recoveredResourceCount = reader.signedInteger("recoveredResourceCount");
  document.failedResourceCount = reader.signedInteger("failedResourceCount");
  document.failures = reader.list("failures", &readFailure);
  return document;
}

// decoded parses the text without exceptions (a parse error gives a discarded value) and reads
// the root object with `readDocument`.
template <typename Document>
std::expected<Document, platform::JSONDocumentError> decoded(std::string_view text,
                                                             Document (*readDocument)(ObjectReader&)) {
  const JSON json = JSON::parse(text, nullptr, false);
  if (json.is_discarded()) return std::unexpected(platform::JSONDocumentError::dataCorrupted);
  ObjectReader reader(json);
  Document document = readDocument(reader);
  if (reader.problem()) return std::unexpected(*reader.problem());
  return document;
}

[[nodiscard]] std::expected<void, Error> writeText(const std::string& text, const std::filesystem::path& path) {
  const ByteView bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  auto output = RecoveryOutputFile::create(path);
  if (!output || !output->append(bytes)) return std::unexpected(Error::outputWriteFailed);
  const auto finished = output->finish(bytes.size(), platform::SHA256::digest(bytes));
  if (!finished || !*finished) return std::unexpected(Error::outputWriteFailed);
  return {};
}

template <typename Document>
[[nodiscard]] std::expected<void, Error> writeDocument(const Document& document, const std::filesystem::path& path) {
  const auto text = documentText(document);
  if (!text) return std::unexpected(text.error());
  return writeText(*text, path);
}

}  // namespace

std::expected<std::string, Error> documentText(const MappingV1& document) {
  if (!hasOnlyFiniteDurations(document)) return std::unexpected(Error::integrityFailure);
  return encoded(toJSON(document));
}

std::expected<std::string, Error> documentText(const ReportV1& document) { return encoded(toJSON(document)); }

std::expected<void, Error> writeJSON(const MappingV1& document, const std::filesystem::path& path) {
  return writeDocument(document, path);
}

std::expected<void, Error> writeJSON(const ReportV1& document, const std::filesystem::path& path) {
  return writeDocument(document, path);
}

std::expected<MappingV1, platform::JSONDocumentError> mappingFromDocumentText(std::string_view text) {
  return decoded(text, &readMapping);
}

std::expected<ReportV1, platform::JSONDocumentError> reportFromDocumentText(std::string_view text) {
  return decoded(text, &readReport);
}

}  // namespace galdrine::recovery
