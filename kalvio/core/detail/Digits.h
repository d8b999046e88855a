#pragma once

#include <charconv>
#include <cmath>
#include <string>

namespace Kalvio::Math::detail {

/// Appends the fewest digits that read back to the same double: 385000, 0.0001, -0, 1e-10, 6.02e+23, nan, -inf. An
/// exponent only where there would be many zeros.
inline void AppendDigits(std::string& text, double value) {
    char digits[32];
    const double size = std::abs(value);
    const bool isPlain = value == 0.0 || (size >= 1e-4 && size < 1e16);
    const std::to_chars_result end =
        isPlain ? std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed)
                : std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, end.ptr);
}

}  // namespace Kalvio::Math::detail
