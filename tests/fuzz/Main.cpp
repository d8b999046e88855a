#include "fuzz/Bytes.h"

// What libFuzzer calls, of the family that the build names. Longer inputs take longer and find no more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Kalvio::Math::Bytes bytes(data, size);
    if (size <= 600) Kalvio::Math::KALVIO_FUZZ(bytes);
    return 0;
}
