#pragma once

#include "kalvio/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Kalvio::Math {

/// The station numbers of an alignment: what its pegs and drawings say, against the length from its start.
///
/// The numbers grow with the length, from a start number on. A station equation lets them go on with another number:
/// behind it lies the next zone. So numbers may be left out (ahead above back) and may occur once in several zones.
///
///     Stationing road(12000.0);
///     if (!road.AppendEquation(12400.0, 12380.0)) return false;  // 400 m on: 12+380 to 12+400 occur twice
///     road.GetText(410.0, 3);                          // "12+390.000/1": behind one equation
///     std::vector<Stationing::Place> places;
///     road.GetPlaces(12390.0, places);                 // lengths 390 in zone 0, 410 in zone 1
class KALVIO_MATH_API Stationing final {
public:
    /// A place by its number and by its length.
    struct Place {
        double number = 0.0;     ///< the station number
        std::uint32_t zone = 0;  ///< equations before it
        double length = 0.0;     ///< from the start of the alignment
    };
    /// Where the numbers go on with another one.
    struct Equation {
        double back = 0.0;    ///< the number that ends a zone
        double ahead = 0.0;   ///< the number that starts the next one, at the same place
        double length = 0.0;  ///< from the start of the alignment
    };

    Stationing() = default;
    // There is always a zone, so that a move copies.
    Stationing(const Stationing&) = default;
    Stationing& operator=(const Stationing&) = default;
    /// @param start  number at the start of the alignment
    explicit Stationing(double start) : zones{{start, 0.0}} {}

    /// @return false, nothing added, unless `back` is above the number that starts the last zone, and for values that
    ///         are not finite
    [[nodiscard]] bool AppendEquation(double back, double ahead);
    double GetStart() const { return zones.front().number; }
    std::uint32_t GetNrOfZones() const { return static_cast<std::uint32_t>(zones.size()); }
    /// Equation 0 stands between zone 0 and zone 1.
    Equation GetEquation(std::uint32_t index) const;

    /// At an equation the number ahead. Lengths before the start belong to zone 0.
    Place GetPlace(double length) const;
    /// @return false, `length` untouched, for a zone that is none and for a number outside of it by more than 1e-10;
    ///         the first zone is open to the back, the last one ahead
    [[nodiscard]] bool GetLength(double number, std::uint32_t zone, double& length) const;
    /// Appends all places that have the number, ascending; the two sides of an equation whose numbers are equal are
    /// one.
    void GetPlaces(double number, std::vector<Place>& places) const;

    /// The number at a length as text, followed by the zone ("/1") where several zones have it; `FormatNumber`.
    std::string GetText(double length, int decimals, std::uint32_t unit = 1000) const;
    /// The place that a text names. @return false, `place` untouched, for a text that `ParseNumber` does not take, a
    /// number that no zone has, and without a zone one that several have
    [[nodiscard]] bool Parse(std::string_view text, Place& place, std::uint32_t unit = 1000) const;

    /// "12+345.678" for 12345.678: whole units, a plus, and the rest with as many digits as the unit has zeros.
    /// @param decimals  0 to 9; others count as the nearest of them
    /// @param unit      10, 100, 1000 ...; with 0 and 1 there is no plus
    static std::string FormatNumber(double number, int decimals, std::uint32_t unit = 1000);
    /// The reverse: an optional sign, digits, and a plus before the rest, which has just as many digits as the unit has
    /// zeros; the plus may be missing. Nothing else: no spaces, no exponent.
    /// @return false, `number` untouched, for any other text, and for more than 18 digits
    [[nodiscard]] static bool ParseNumber(std::string_view text, double& number, std::uint32_t unit = 1000);

private:
    struct Zone {
        double number = 0.0;  // at its start
        double length = 0.0;  // of its start from that of the alignment
    };

    bool HasNumber(double number, std::size_t zone, double& length) const;

    std::vector<Zone> zones{Zone()};
};

}  // namespace Kalvio::Math
