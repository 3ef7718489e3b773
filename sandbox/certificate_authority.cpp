#include "sandbox/certificate_authority.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <random>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace {

struct Release {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
};
using Key = std::unique_ptr<EVP_PKEY, Release>;
using Certificate = std::unique_ptr<X509, Release>;
using Bio = std::unique_ptr<BIO, Release>;

Key newKey() {
    return Key(EVP_EC_gen("P-256"));
}

std::string textOf(const Bio& bio) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

std::string pemOf(X509* certificate) {
    const Bio bio(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(bio.get(), certificate);
    return textOf(bio);
}

std::string pemOf(EVP_PKEY* key) {
    const Bio bio(BIO_new(BIO_s_mem()));
    PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    return textOf(bio);
}

Bio reader(const std::string& pem) {
    return Bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
}

// Returns a new certificate. The caller must add issuer, extensions and signature.
Certificate newCertificate(EVP_PKEY* key, const std::string& commonName, int fromDays, int toDays) {
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    std::uint64_t serial = 1;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial >> 1);
    X509_time_adj_ex(X509_getm_notBefore(certificate.get()), fromDays, 0, nullptr);
    X509_time_adj_ex(X509_getm_notAfter(certificate.get()), toDays, 0, nullptr);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0);
    X509_set_pubkey(certificate.get(), key);
    return certificate;
}

void addExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Release> extension(
        X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    X509_add_ext(certificate, extension.get(), -1);
}

} // namespace

CertificateAuthority::CertificateAuthority() {
    const Key key = newKey();
    // Use a random name: OpenSSL searches for an issuer by name, so several trusted authorities need different names.
    const std::string name = "VOLO sandbox authority " + std::to_string(std::random_device{}());
    const Certificate root = newCertificate(key.get(), name, -1, 30);
    X509_set_issuer_name(root.get(), X509_get_subject_name(root.get()));
    addExtension(root.get(), root.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(root.get(), root.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(root.get(), root.get(), NID_subject_key_identifier, "hash");
    X509_sign(root.get(), key.get(), EVP_sha256());
    rootPem_ = pemOf(root.get());
    rootKeyPem_ = pemOf(key.get());
}

bool CertificateAuthority::writeRoot(const std::string& path) const {
    std::ofstream file(path, std::ios::binary);
    file << rootPem_;
    file.close();
    return !file.fail();
}

ServerIdentity CertificateAuthority::issue(const ServerCertificateRequest& request) const {
    const Key key = newKey();
    const Certificate certificate =
        newCertificate(key.get(), request.commonName, request.validFromDays, request.validToDays);
    const Certificate root(PEM_read_bio_X509(reader(rootPem_).get(), nullptr, nullptr, nullptr));
    const Key rootKey(PEM_read_bio_PrivateKey(reader(rootKeyPem_).get(), nullptr, nullptr, nullptr));
    X509* issuer = request.selfSigned ? certificate.get() : root.get();

    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer));
    addExtension(certificate.get(), issuer, NID_basic_constraints, "CA:FALSE");
    addExtension(certificate.get(), issuer, NID_ext_key_usage, "serverAuth");
    std::string names;
    for (const std::string& name : request.dnsNames)
        names += (names.empty() ? "DNS:" : ",DNS:") + name;
    for (const std::string& address : request.ipAddresses) {
        names += (names.empty() ? "IP:" : ",IP:") + address;
#ifdef __MINGW32__
        names += ",DNS:" + address; // cpp-httplib 0.18.7 with MinGW finds IP addresses only in DNS names
#endif
    }
    if (!names.empty()) addExtension(certificate.get(), issuer, NID_subject_alt_name, names);
    X509_sign(certificate.get(), request.selfSigned ? key.get() : rootKey.get(), EVP_sha256());
    return {pemOf(certificate.get()), pemOf(key.get())};
}
