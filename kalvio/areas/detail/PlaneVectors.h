#pragma once

#include "kalvio/polygons/detail/ExactPredicates.h"

/// Bare positions as vectors.
namespace Kalvio::Math::detail {

inline PlanePoint operator+(const PlanePoint& a, const PlanePoint& b) { return {a.x + b.x, a.y + b.y}; }
inline PlanePoint operator-(const PlanePoint& a, const PlanePoint& b) { return {a.x - b.x, a.y - b.y}; }
inline PlanePoint operator*(const PlanePoint& a, double factor) { return {a.x * factor, a.y * factor}; }
inline double Dot(const PlanePoint& a, const PlanePoint& b) { return a.x * b.x + a.y * b.y; }
inline double Cross(const PlanePoint& a, const PlanePoint& b) { return a.x * b.y - a.y * b.x; }
inline double Square(const PlanePoint& a) { return Dot(a, a); }
/// A quarter turn to the right.
inline PlanePoint RightOf(const PlanePoint& a) { return {a.y, -a.x}; }

}  // namespace Kalvio::Math::detail
