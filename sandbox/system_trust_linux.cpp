#include "sandbox/system_trust.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

SystemTrust::SystemTrust(const std::string& rootFile) {
    if (const char* before = std::getenv("SSL_CERT_FILE")) before_ = before;
    std::error_code ignored;
    trusted_ = std::filesystem::exists(rootFile, ignored) && ::setenv("SSL_CERT_FILE", rootFile.c_str(), 1) == 0;
}

SystemTrust::~SystemTrust() {
    if (before_) {
        ::setenv("SSL_CERT_FILE", before_->c_str(), 1);
    } else {
        ::unsetenv("SSL_CERT_FILE");
    }
}
