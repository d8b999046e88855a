#pragma once

#include "kalvio/core/Angle.h"
#include "kalvio/core/detail/Constants.h"

#include <cmath>

namespace Kalvio::Math::detail {

/// Longitude and latitude of a point whose X holds longitude and Y latitude, in decimal degrees.
///
/// Values convert to and from an `AngleUnit` (an unknown unit counts as degrees). Degree and minute parts are truncated
/// toward zero, so a negative angle has negative parts. Setters add the parts each with its own sign: -10 degrees and
/// 30 minutes give -9.5; pass negative parts for negative angles.
template <class PointType>
class GeographicAccess {
public:
    double GetLongitude(AngleUnit unit) const { return ToUnit(Self().GetX(), unit); }
    double GetLatitude(AngleUnit unit) const { return ToUnit(Self().GetY(), unit); }
    void SetLongitude(double value, AngleUnit unit) { Self().SetX(FromUnit(value, unit)); }
    void SetLatitude(double value, AngleUnit unit) { Self().SetY(FromUnit(value, unit)); }
    void GetLongLat(double& longitude, double& latitude, AngleUnit unit) const {
        longitude = GetLongitude(unit);
        latitude = GetLatitude(unit);
    }
    void SetLongLat(double longitude, double latitude, AngleUnit unit) {
        SetLongitude(longitude, unit);
        SetLatitude(latitude, unit);
    }

    void GetLongitude(int& degrees, double& minutes) const { Split(Self().GetX(), degrees, minutes); }
    void GetLatitude(int& degrees, double& minutes) const { Split(Self().GetY(), degrees, minutes); }
    void GetLongitude(int& degrees, int& minutes, double& seconds) const {
        Split(Self().GetX(), degrees, minutes, seconds);
    }
    void GetLatitude(int& degrees, int& minutes, double& seconds) const {
        Split(Self().GetY(), degrees, minutes, seconds);
    }
    void GetLongLat(int& longDegrees, double& longMinutes, int& latDegrees, double& latMinutes) const {
        GetLongitude(longDegrees, longMinutes);
        GetLatitude(latDegrees, latMinutes);
    }
    void GetLongLat(int& longDegrees, int& longMinutes, double& longSeconds, int& latDegrees, int& latMinutes,
                    double& latSeconds) const {
        GetLongitude(longDegrees, longMinutes, longSeconds);
        GetLatitude(latDegrees, latMinutes, latSeconds);
    }

    void SetLongitude(int degrees, double minutes) { Self().SetX(Joined(degrees, minutes, 0.0)); }
    void SetLatitude(int degrees, double minutes) { Self().SetY(Joined(degrees, minutes, 0.0)); }
    void SetLongitude(int degrees, int minutes, double seconds) { Self().SetX(Joined(degrees, minutes, seconds)); }
    void SetLatitude(int degrees, int minutes, double seconds) { Self().SetY(Joined(degrees, minutes, seconds)); }
    void SetLongLat(int longDegrees, double longMinutes, int latDegrees, double latMinutes) {
        SetLongitude(longDegrees, longMinutes);
        SetLatitude(latDegrees, latMinutes);
    }
    void SetLongLat(int longDegrees, int longMinutes, double longSeconds, int latDegrees, int latMinutes,
                    double latSeconds) {
        SetLongitude(longDegrees, longMinutes, longSeconds);
        SetLatitude(latDegrees, latMinutes, latSeconds);
    }

private:
    static constexpr double minutesPerDegree = 60.0;

    GeographicAccess() = default;
    friend PointType;

    PointType& Self() { return static_cast<PointType&>(*this); }
    const PointType& Self() const { return static_cast<const PointType&>(*this); }

    static double ToUnit(double degrees, AngleUnit unit) {
        Angle::TransformDecimalDegree(unit, degrees);
        return degrees;
    }
    static double FromUnit(double value, AngleUnit unit) {
        Angle::TransformValue(unit, AngleUnit::DecimalDegree, value);
        return value;
    }
    // Whole part toward zero; values beyond int are saturated, NaN gives 0.
    static int Truncated(double value) {
        constexpr double limit = 2147483647.0;
        if (value >= limit) return 2147483647;
        if (value <= -limit) return -2147483647;
        return value == value ? static_cast<int>(value) : 0;
    }
    static void Split(double value, int& degrees, double& minutes) {
        degrees = Truncated(value);
        minutes = (value - degrees) * minutesPerDegree;
    }
    static void Split(double value, int& degrees, int& minutes, double& seconds) {
        double minutesAndSeconds = 0.0;
        Split(value, degrees, minutesAndSeconds);
        minutes = Truncated(minutesAndSeconds);
        seconds = (minutesAndSeconds - minutes) * minutesPerDegree;
    }
    static double Joined(int degrees, double minutes, double seconds) {
        return degrees + minutes / minutesPerDegree + seconds / secondsPerDegree;
    }
};

}  // namespace Kalvio::Math::detail
