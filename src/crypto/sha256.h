#pragma once

// Computes the SHA-256 of texts, streams and files. Any thread.

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <openssl/evp.h>

// Computes the digest of data that arrives in pieces.
class Sha256 {
  public:
    Sha256();
    void update(const void* bytes, std::size_t count);
    [[nodiscard]] std::string finish(); // returns 64 lower-case hexadecimal digits, empty after a failure; call once

  private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
    bool good_;
};

// Returns the digest of a file as 64 lower-case hexadecimal digits; empty on failure. Reads the file 256 KiB at a time.
// If another thread sets `stop`, the function ends early and returns an empty text.
[[nodiscard]] std::string sha256OfFile(const std::string& path, const std::atomic<bool>* stop = nullptr);

// Starts a thread that computes the digest of a file while the caller still writes the file.
class GrowingFileSha256 {
  public:
    explicit GrowingFileSha256(std::string path, const std::atomic<bool>* stop = nullptr);
    ~GrowingFileSha256(); // ends the computation and joins the thread
    GrowingFileSha256(const GrowingFileSha256&) = delete;
    GrowingFileSha256& operator=(const GrowingFileSha256&) = delete;

    // Call it after each write. `size` is the number of bytes that the file then has.
    void grewTo(std::uint64_t size);

    // Reads the rest of the file, then returns what sha256OfFile would return. Call it once, after the last write.
    [[nodiscard]] std::string finish();

  private:
    std::uint64_t waitPast(std::uint64_t at);

    const std::string path_;
    const std::atomic<bool>* const stop_;
    std::mutex mutex_; // guards readable_
    std::condition_variable grown_;
    std::uint64_t readable_ = 0;
    std::atomic<bool> abandoned_ = false;
    std::string digest_;
    std::thread thread_; // not joinable if the system could not create it: finish then reads the whole file
};

// Returns the 32 bytes of the digest of `text`; empty on failure.
[[nodiscard]] std::vector<std::uint8_t> sha256Bytes(const std::string& text);

// Returns two lower-case hexadecimal digits for each byte.
[[nodiscard]] std::string hexEncode(const unsigned char* bytes, std::size_t count);
