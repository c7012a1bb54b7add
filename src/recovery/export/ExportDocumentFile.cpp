#include "recovery/export/ExportDocumentFile.hpp"

#include <string>

#include "platform/SHA256.hpp"
#include "recovery/export/ExportDocumentText.hpp"
#include "recovery/export/RecoveryOutputFile.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

namespace {

using Error = RecoveryExporterError;

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

std::expected<void, Error> writeJSON(const MappingV1& document, const std::filesystem::path& path) {
  return writeDocument(document, path);
}

std::expected<void, Error> writeJSON(const ReportV1& document, const std::filesystem::path& path) {
  return writeDocument(document, path);
}

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
