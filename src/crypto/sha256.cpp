#include "crypto/sha256.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr std::uint64_t kBufferBytes = 262144;
constexpr std::uint64_t kWholeFile = std::numeric_limits<std::uint64_t>::max();

// Computes the digest of a file. `waitPast(n)` waits until more than n bytes of the file are readable and returns their
// number, or returns 0 to end the computation without a digest.
std::string digestOf(const std::string& path, const std::function<std::uint64_t(std::uint64_t)>& waitPast) {
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0); // unbuffered, because the reads below are large
    Sha256 digest;
    std::vector<char> buffer(kBufferBytes);
    for (std::uint64_t done = 0;; done += static_cast<std::uint64_t>(file.gcount())) {
        const std::uint64_t readable = waitPast(done);
        if (readable <= done) return {};
        if (!file.is_open()) file.open(path, std::ios::binary);
        if (!file) break;
        file.read(buffer.data(), static_cast<std::streamsize>(std::min(kBufferBytes, readable - done)));
        digest.update(buffer.data(), static_cast<std::size_t>(file.gcount()));
    }
    return file.eof() && !file.bad() ? digest.finish() : std::string();
}

} // namespace

Sha256::Sha256()
    : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free)
    , good_(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1) {}

void Sha256::update(const void* bytes, std::size_t count) {
    good_ = good_ && EVP_DigestUpdate(context_.get(), bytes, count) == 1;
}

std::string Sha256::finish() {
    unsigned char bytes[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    good_ = good_ && EVP_DigestFinal_ex(context_.get(), bytes, &size) == 1;
    return good_ ? hexEncode(bytes, size) : std::string();
}

std::string sha256OfFile(const std::string& path, const std::atomic<bool>* stop) {
    return digestOf(path, [stop](std::uint64_t) { return stop && *stop ? 0 : kWholeFile; });
}

GrowingFileSha256::GrowingFileSha256(std::string path, const std::atomic<bool>* stop)
    : path_(std::move(path))
    , stop_(stop) {
    try {
        thread_ = std::thread([this] { digest_ = digestOf(path_, [this](std::uint64_t at) { return waitPast(at); }); });
    } catch (const std::system_error&) { // no thread: finish computes the digest
    }
}

GrowingFileSha256::~GrowingFileSha256() {
    if (!thread_.joinable()) return;
    abandoned_ = true;
    (void)finish();
}

void GrowingFileSha256::grewTo(std::uint64_t size) {
    const std::lock_guard lock(mutex_);
    readable_ = size;
    grown_.notify_one();
}

std::string GrowingFileSha256::finish() {
    if (!thread_.joinable()) return sha256OfFile(path_, stop_);
    grewTo(kWholeFile);
    thread_.join();
    return std::move(digest_);
}

std::uint64_t GrowingFileSha256::waitPast(std::uint64_t at) {
    std::unique_lock lock(mutex_);
    grown_.wait(lock, [&] { return readable_ > at; });
    return abandoned_ || (stop_ && *stop_) ? 0 : readable_;
}

std::vector<std::uint8_t> sha256Bytes(const std::string& text) {
    std::vector<std::uint8_t> digest(32);
    if (EVP_Digest(text.data(), text.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) return {};
    return digest;
}

std::string hexEncode(const unsigned char* bytes, std::size_t count) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}
