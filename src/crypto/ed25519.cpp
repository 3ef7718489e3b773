#include "crypto/ed25519.h"

#include <memory>

#include <openssl/evp.h>

static const unsigned char* asBytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

bool verifyEd25519(const std::string& text, const std::string& signature, const std::string& publicKey) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, asBytes(publicKey), publicKey.size()), &EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), asBytes(signature), signature.size(), asBytes(text), text.size()) == 1;
}
