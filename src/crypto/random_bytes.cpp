#include "crypto/random_bytes.h"

#include <openssl/rand.h>

#include "crypto/base64.h"

std::string randomBytes(std::size_t count) {
    std::string bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1) return {};
    return bytes;
}

std::string randomUrlToken(std::size_t byteCount) {
    return base64UrlEncode(randomBytes(byteCount));
}
