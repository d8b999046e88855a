#include "kalvio/alignments/Stationing.h"

#include "kalvio/core/detail/Constants.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Kalvio::Math {

namespace {

constexpr std::size_t mostDigits = 18;  // of a number in a text; they fit into 64 bits

std::size_t ZerosOf(std::uint32_t unit) {
    std::size_t zeros = 0;
    for (; unit >= 10; unit /= 10) ++zeros;
    return zeros;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool Stationing::AppendEquation(double back, double ahead) {
    const Zone& last = zones.back();
    const double length = last.length + (back - last.number);
    if (!(back > last.number) || !std::isfinite(ahead) || !std::isfinite(length)) return false;
    zones.push_back({ahead, length});
    return true;
}

Stationing::Equation Stationing::GetEquation(std::uint32_t index) const {
    if (index + std::size_t{1} >= zones.size()) return {};
    const Zone& before = zones[index];
    const Zone& behind = zones[index + 1];
    return {before.number + (behind.length - before.length), behind.number, behind.length};
}

Stationing::Place Stationing::GetPlace(double length) const {
    const auto next = std::upper_bound(zones.begin() + 1, zones.end(), length,
                                       [](double value, const Zone& zone) { return value < zone.length; });
    const Zone& zone = *(next - 1);
    return {zone.number + (length - zone.length), static_cast<std::uint32_t>(next - zones.begin() - 1), length};
}

bool Stationing::HasNumber(double number, std::size_t zone, double& length) const {
    const double along = number - zones[zone].number;
    const double found = zones[zone].length + along;
    if (!std::isfinite(found)) return false;
    if (zone > 0 && !(along >= -detail::numericalZero)) return false;
    if (zone + 1 < zones.size() && !(found <= zones[zone + 1].length + detail::numericalZero)) return false;
    length = found;
    return true;
}

bool Stationing::GetLength(double number, std::uint32_t zone, double& length) const {
    return zone < zones.size() && HasNumber(number, zone, length);
}

void Stationing::GetPlaces(double number, std::vector<Place>& places) const {
    const std::size_t known = places.size();
    for (std::size_t i = 0; i < zones.size(); ++i) {
        double length = 0.0;
        if (!HasNumber(number, i, length)) continue;
        // Back and ahead of an equation that changes nothing are one place, in the zone ahead.
        if (places.size() > known && length - places.back().length <= 2.0 * detail::numericalZero) places.pop_back();
        places.push_back({number, static_cast<std::uint32_t>(i), length});
    }
}

std::string Stationing::GetText(double length, int decimals, std::uint32_t unit) const {
    const Place place = GetPlace(length);
    std::string text = FormatNumber(place.number, decimals, unit);
    double printed = place.number;  // what a reader of the text will look for
    std::vector<Place> places;
    if (ParseNumber(text, printed, unit)) GetPlaces(printed, places);
    if (places.size() > 1 || (places.size() == 1 && places.front().zone != place.zone)) {
        text += '/';
        text += std::to_string(place.zone);
    }
    return text;
}

bool Stationing::Parse(std::string_view text, Place& place, std::uint32_t unit) const {
    const std::size_t slash = text.find('/');
    double number = 0.0;
    if (!ParseNumber(text.substr(0, slash), number, unit)) return false;
    if (slash == std::string_view::npos) {
        std::vector<Place> places;
        GetPlaces(number, places);
        if (places.size() != 1) return false;
        place = places.front();
        return true;
    }
    std::uint32_t zone = 0;
    double length = 0.0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + slash + 1, end, zone);
    if (error != std::errc() || rest != end || !GetLength(number, zone, length)) return false;
    place = {number, zone, length};
    return true;
}

std::string Stationing::FormatNumber(double number, int decimals, std::uint32_t unit) {
    std::array<char, 400> digits{};  // the largest double has 309 before the point
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), std::abs(number),
                                       std::chars_format::fixed, std::clamp(decimals, 0, 9));
    std::string text(digits.data(), written.ptr);
    if (!std::isfinite(number)) return text;
    const bool isZero = text.find_first_not_of("0.") == std::string::npos;
    const std::size_t zeros = ZerosOf(unit);
    if (zeros > 0) {
        const std::size_t point = std::min(text.find('.'), text.size());
        if (point <= zeros) text.insert(0, zeros + 1 - point, '0');
        text.insert(std::max(point, zeros + 1) - zeros, 1, '+');
    }
    return number < 0.0 && !isZero ? "-" + text : text;
}

bool Stationing::ParseNumber(std::string_view text, double& number, std::uint32_t unit) {
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative) text.remove_prefix(1);
    const std::string_view whole = text.substr(0, text.find('.'));
    const std::size_t plus = whole.find('+');
    const std::size_t zeros = ZerosOf(unit);
    if (plus != std::string_view::npos && (zeros == 0 || plus == 0 || whole.size() - plus - 1 != zeros)) return false;
    if (whole.empty() || whole.size() + 1 == text.size()) return false;  // nothing before or behind the point
    std::uint64_t mantissa = 0;
    std::size_t digits = 0;
    double scale = 1.0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == plus || i == whole.size()) continue;
        if (!IsDigit(text[i]) || ++digits > mostDigits) return false;
        mantissa = 10 * mantissa + static_cast<std::uint64_t>(text[i] - '0');
        if (i > whole.size()) scale *= 10.0;
    }
    const double value = static_cast<double>(mantissa) / scale;
    number = isNegative ? -value : value;
    return true;
}

}  // namespace Kalvio::Math
