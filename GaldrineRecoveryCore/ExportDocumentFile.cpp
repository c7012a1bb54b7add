#include "GaldrineRecoveryCore/ExportDocumentFile.hpp"

#include <string>

#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrineRecoveryCore/ExportDocumentText.hpp"
#include "GaldrineRecoveryCore/RecoveryOutputFile.hpp"

namespace GaldrineRecoveryExporterV1 {

namespace {

using Error = GaldrineRecoveryExporterV1Error;

[[nodiscard]] std::expected<void, Error> writeText(const std::string& text, const std::filesystem::path& url) {
  const ByteView bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  auto output = RecoveryOutputFile::create(url);
  if (!output || !output->append(bytes)) return std::unexpected(Error::outputWriteFailed);
  const auto finished = output->finish(bytes.size(), GaldrinePlatformSHA256::digest(bytes));
  if (!finished || !*finished) return std::unexpected(Error::outputWriteFailed);
  return {};
}

template <typename Document>
[[nodiscard]] std::expected<void, Error> writeDocument(const Document& document, const std::filesystem::path& url) {
  const auto text = documentText(document);
  if (!text) return std::unexpected(text.error());
  return writeText(*text, url);
}

}  // namespace

std::expected<void, Error> writeJSON(const MappingV1& document, const std::filesystem::path& url) {
  return writeDocument(document, url);
}

std::expected<void, Error> writeJSON(const ReportV1& document, const std::filesystem::path& url) {
  return writeDocument(document, url);
}

}  // namespace GaldrineRecoveryExporterV1
