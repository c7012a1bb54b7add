#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "keys/KeyManagementResourceBundle.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::keys {

namespace {

// The test program lives in the build tree's tests directory, where no bundle stands.
TEST(KeyManagementResourceBundle, FallsBackToTheBuildTree) {
  EXPECT_EQ(KeyManagementResourceBundle::location(), std::filesystem::path(GALDRINE_BUILD_RESOURCE_BUNDLE));
  EXPECT_TRUE(std::filesystem::is_regular_file(KeyManagementResourceBundle::wordListFile()));
}

// Run only by the next test, in a copy of this program.
TEST(KeyManagementResourceBundle, DISABLED_PrintsLocation) {
  std::printf("location=%s\n", KeyManagementResourceBundle::location().c_str());
}

std::string outputOf(const std::string& command) {
  struct PipeClose { void operator()(FILE* pipe) const { ::pclose(pipe); } };
  const std::unique_ptr<FILE, PipeClose> pipe(::popen(command.c_str(), "r"));
  std::string output;
  if (!pipe) return output;
  std::array<char, 4096> buffer{};
  while (std::fgets(buffer.data(), buffer.size(), pipe.get()) != nullptr) output += buffer.data();
  return output;
}

TEST(KeyManagementResourceBundle, PrefersTheBundleBesideTheExecutable) {
  const testsupport::TemporaryDirectory directory;
  const std::filesystem::path program = directory / "copied-tests";
  std::filesystem::copy_file(std::filesystem::read_symlink("/proc/self/exe"), program);
  const std::filesystem::path bundle = directory / GALDRINE_KEY_MANAGEMENT_BUNDLE_NAME;
  std::filesystem::create_directory(bundle);
  const std::string output = outputOf("'" + program.string() +
                                      "' --gtest_also_run_disabled_tests"
                                      " --gtest_filter=KeyManagementResourceBundle.DISABLED_PrintsLocation");
  EXPECT_NE(output.find("location=" + bundle.string() + "\n"), std::string::npos) << output;
}

}  // namespace

}  // namespace galdrine::keys
