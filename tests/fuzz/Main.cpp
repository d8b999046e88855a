#include "fuzz/Bytes.h"

// What libFuzzer calls. Longer inputs take longer and find no more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Kalvio::Math::Bytes bytes(data, size);
    if (size <= 600) Kalvio::Math::Fuzz(bytes);
    return 0;
}
