// Areas of one, two and three balls, as they are known in closed form.
#pragma once

namespace closed_forms {

/// The exposed area of two balls that overlap, `apart` from one another.
double twoBalls(double radius, double other, double apart);
/// The exposed area of three equal balls that overlap, at the corners of a triangle with equal
/// sides.
double threeBalls(double radius, double side);

/// The area that a probe rolls on around two balls; the probe touches both at once, and may
/// overlap itself there.
double twoBallsExcluded(double radius, double other, double apart, double probe);
/// The same around three equal balls at the corners of a triangle with equal sides, on either side
/// of which the probe rests on all three without meeting itself.
double threeBallsExcluded(double radius, double side, double probe);

} // namespace closed_forms
