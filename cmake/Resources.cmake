# The run-time resources are copied into the build tree at configure time, and installed
# beside the executable. Programs look beside themselves first, then in this build tree.
set(GALDRINE_KEY_MANAGEMENT_BUNDLE_NAME "GaldrineCore_GaldrineKeyManagement.bundle")
set(GALDRINE_BUILD_RESOURCE_DIRECTORY "${PROJECT_BINARY_DIR}/${GALDRINE_KEY_MANAGEMENT_BUNDLE_NAME}")
configure_file("${PROJECT_SOURCE_DIR}/resources/bip39-english-v1.txt"
               "${GALDRINE_BUILD_RESOURCE_DIRECTORY}/bip39-english-v1.txt" COPYONLY)
set(GALDRINE_RESOURCE_DEFINITIONS
  GALDRINE_BUILD_RESOURCE_BUNDLE="${GALDRINE_BUILD_RESOURCE_DIRECTORY}"
  GALDRINE_KEY_MANAGEMENT_BUNDLE_NAME="${GALDRINE_KEY_MANAGEMENT_BUNDLE_NAME}"
  GALDRINE_SOURCE_DIRECTORY="${PROJECT_SOURCE_DIR}")
# Installed beside the executable, where the program looks first.
include(GNUInstallDirs)
install(DIRECTORY "${GALDRINE_BUILD_RESOURCE_DIRECTORY}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
