#include "platform/HKDF.hpp"

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <memory>

#include "platform/SecureMemory.hpp"

namespace galdrine::platform {

namespace {

struct KDFFree {
  void operator()(EVP_KDF* kdf) const { EVP_KDF_free(kdf); }
};
struct KDFContextFree {
  void operator()(EVP_KDF_CTX* context) const { EVP_KDF_CTX_free(context); }
};

// The library refuses an octet string whose pointer is null, which is what an empty span of an
// empty vector carries. An empty salt (HMAC then pads it to hash-length zeros, as an absent salt
// must be) and an empty input key material are legal, so empty inputs point here instead.
constexpr std::uint8_t kNoByte = 0;

std::uint8_t* parameterBytes(ByteView bytes) {
  // The parameter array takes non-const pointers; the library only reads through them.
  return const_cast<std::uint8_t*>(bytes.empty() ? &kNoByte : bytes.data());
}

bool derive(ByteView inputKeyMaterial, ByteView salt, ByteView info, std::span<std::uint8_t> output) {
  const std::unique_ptr<EVP_KDF, KDFFree> kdf{EVP_KDF_fetch(nullptr, OSSL_KDF_NAME_HKDF, nullptr)};
  if (!kdf) return false;
  const std::unique_ptr<EVP_KDF_CTX, KDFContextFree> context{EVP_KDF_CTX_new(kdf.get())};
  if (!context) return false;
  char digestName[] = "SHA256";
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digestName, 0),
      OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, parameterBytes(inputKeyMaterial), inputKeyMaterial.size()),
      OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SALT, parameterBytes(salt), salt.size()),
      OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, parameterBytes(info), info.size()),
      OSSL_PARAM_construct_end(),
  };
  return EVP_KDF_derive(context.get(), output.data(), output.size(), parameters) == 1;
}

}  // namespace

namespace HKDF {

bool deriveSHA256(ByteView inputKeyMaterial, ByteView salt, ByteView info, std::span<std::uint8_t> output) {
  const bool derived = !output.empty() && derive(inputKeyMaterial, salt, info, output);
  ERR_clear_error();
  if (!derived) SecureMemory::wipe(output);
  return derived;
}

}  // namespace HKDF

}  // namespace galdrine::platform
