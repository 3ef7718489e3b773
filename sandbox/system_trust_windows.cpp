#include "sandbox/system_trust.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <windows.h>
#include <wincrypt.h>

namespace {

constexpr DWORD kEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

bool isWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

const BYTE* bytesOf(const std::string& text) {
    return reinterpret_cast<const BYTE*>(text.data());
}

// Returns the certificate in DER; empty if the file contains none.
std::string readCertificate(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::string pem{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const DWORD length = static_cast<DWORD>(pem.size());
    DWORD size = 0;
    if (!CryptStringToBinaryA(pem.data(), length, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr))
        return {};
    std::string der(size, '\0');
    CryptStringToBinaryA(pem.data(), length, CRYPT_STRING_BASE64HEADER, reinterpret_cast<BYTE*>(der.data()), &size,
                         nullptr, nullptr);
    return der;
}

} // namespace

SystemTrust::SystemTrust(const std::string& rootFile)
    : certificate_(isWine() ? readCertificate(rootFile) : std::string()) {
    if (certificate_.empty()) return;
    const HCERTSTORE store = CertOpenSystemStoreW(0, L"ROOT");
    trusted_ =
        CertAddEncodedCertificateToStore(store, kEncoding, bytesOf(certificate_),
                                         static_cast<DWORD>(certificate_.size()), CERT_STORE_ADD_ALWAYS, nullptr);
    CertCloseStore(store, 0);
}

SystemTrust::~SystemTrust() {
    if (!trusted_) return;
    const HCERTSTORE store = CertOpenSystemStoreW(0, L"ROOT");
    const CERT_CONTEXT* wanted =
        CertCreateCertificateContext(kEncoding, bytesOf(certificate_), static_cast<DWORD>(certificate_.size()));
    const CERT_CONTEXT* found = CertFindCertificateInStore(store, kEncoding, 0, CERT_FIND_EXISTING, wanted, nullptr);
    if (found != nullptr) CertDeleteCertificateFromStore(found); // also releases `found`
    CertFreeCertificateContext(wanted);
    CertCloseStore(store, 0);
}
