# The recovery key word list is compiled into the keys module, so that a program copied or
# installed anywhere reads recovery keys with no file beside it. The bytes of
# resources/bip39-english-v1.txt become an array in a generated source of the given module;
# the program checks them against the pinned digest and the list's shape on every load. The
# configuration already refuses a list of another digest, so a damaged copy stops here instead
# of building a program that reads no recovery key; an edit of the list re-runs it.
function(galdrine_add_recovery_key_word_list target)
  set(word_list "${PROJECT_SOURCE_DIR}/resources/bip39-english-v1.txt")
  set(generated "${PROJECT_BINARY_DIR}/generated/${target}/RecoveryKeyWordList.cpp")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${word_list}")

  file(SHA256 "${word_list}" digest)
  if(NOT digest STREQUAL "2f5eed53a4727b4bf8880d8f3f199efc90e58503646d9ff8eff3a2ed3b24dbda")
    message(FATAL_ERROR "bip39-english-v1.txt: not the published word list (SHA-256 ${digest})")
  endif()
  file(READ "${word_list}" hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(REPEAT "0x..," 16 row)
  string(REGEX REPLACE "(${row})" "    \\1\n" bytes "${bytes}")
  string(REGEX REPLACE "(0x[^\n]*)$" "    \\1\n" bytes "${bytes}")  # the last, shorter row

  set(GALDRINE_RECOVERY_KEY_WORD_LIST_BYTES "${bytes}")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/RecoveryKeyWordList.cpp.in" "${generated}" @ONLY)
  target_sources(${target} PRIVATE "${generated}")
endfunction()
