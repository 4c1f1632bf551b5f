// Source: M. L. Connolly, J. Appl. Cryst. 16 (1983) 548-558: patches on balls by the theorem of
// Gauss and Bonnet, patches between two balls as parts of a torus.
#include "ClosedForms.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace closed_forms {

namespace {

constexpr double pi = std::numbers::pi;

/// How far from the first ball's centre the plane is in which two balls meet.
double planeOf(double radius, double other, double apart) {
    return (apart * apart + radius * radius - other * other) / (2 * apart);
}

/// The part of a torus swept by a probe that turns by `angle` around an axis, its centre `around`
/// from there, between the directions to two balls, of these sines over the plane of the turn.
double torusPatch(double angle, double around, double probe, double sine, double otherSine) {
    // Within this angle from the plane the probe is beyond the axis.
    const double cusp = around < probe ? std::acos(around / probe) : 0;
    const double angles = std::asin(sine) + std::asin(otherSine) - 2 * cusp;
    const double sines = sine + otherSine - 2 * std::sin(cusp);
    return angle * probe * (around * angles - probe * sines);
}

/// The solid angle outside of two caps of this cosine that overlap, 60 degrees apart.
double outsideTwoCaps(double cosine) {
    const double sine = std::sqrt(1 - cosine * cosine);
    const double half = std::acos(cosine * 0.5 / (sine * std::sqrt(0.75)));
    const double corner = std::acos((0.5 - cosine * cosine) / (sine * sine));
    const double inside = 2 * pi - 2 * cosine * (2 * pi - 2 * half) + 2 * corner;
    return 4 * pi - inside;
}

} // namespace

double twoBalls(double radius, double other, double apart) {
    const double plane = planeOf(radius, other, apart);
    return 2 * pi * (radius * (radius + plane) + other * (other + apart - plane));
}

double threeBalls(double radius, double side) {
    return 3 * radius * radius * outsideTwoCaps(side / 2 / radius);
}

double twoBallsExcluded(double radius, double other, double apart, double probe) {
    const double plane = planeOf(radius + probe, other + probe, apart);
    const double sine = plane / (radius + probe);
    const double otherSine = (apart - plane) / (other + probe);
    const double around = std::sqrt((radius + probe) * (radius + probe) - plane * plane);
    return 2 * pi * (radius * radius * (1 + sine) + other * other * (1 + otherSine)) +
           torusPatch(2 * pi, around, probe, sine, otherSine);
}

double threeBallsExcluded(double radius, double side, double probe) {
    const double grown = radius + probe;
    const double sine = side / 2 / grown;
    const double inward = side / (2 * std::sqrt(3.0)); // from an edge to the middle
    const double height = std::sqrt(grown * grown - side * side / 3);
    const double around = std::sqrt(grown * grown - side * side / 4);
    const double angle = 2 * pi - 2 * std::atan2(height, inward);
    const double between = std::cos(2 * std::asin(sine));
    const double corner = std::acos(between / (1 + between));
    return 3 * radius * radius * outsideTwoCaps(sine) +
           3 * torusPatch(angle, around, probe, sine, sine) + 2 * probe * probe * (3 * corner - pi);
}

} // namespace closed_forms
