// Passes the inputs of libFuzzer to the target that the environment variable VOLO_FUZZ_TARGET names.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const FuzzTarget target = fuzzTargets().at(std::getenv("VOLO_FUZZ_TARGET"));
    target({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
