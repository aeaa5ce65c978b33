// Elementary functions that give the same bits on every platform.
//
// The C library's exp, log and cos may differ in the last place from one platform to the next.
// These use only additions, multiplications, divisions and exact scaling, all of which IEEE 754
// rounds in one way. They are good to about 1e-14, far more than an 8-bit sample shows. (Build
// without contraction to fused multiply-adds and without x87 excess precision.)
#pragma once

#include <cmath>

namespace ppl::simulator::math {

inline double exp(double x) {
  constexpr double ln_2 = 0.693147180559945309417;
  const double n = std::floor(x / ln_2 + 0.5);
  const double f = x - n * ln_2;  // |f| <= 0.35
  double term = 1, sum = 1;
  for (int i = 1; i <= 16; ++i) {
    term = term * f / i;
    sum += term;
  }
  return std::ldexp(sum, static_cast<int>(n));
}

// x > 0.
inline double log(double x) {
  constexpr double ln_2 = 0.693147180559945309417;
  int exponent = 0;
  double m = std::frexp(x, &exponent);  // 0.5 <= m < 1
  if (m < 0.70710678118654752440) {
    m *= 2;
    --exponent;
  }
  const double z = (m - 1) / (m + 1);  // |z| < 0.172; log m = 2 artanh z
  double power = z, sum = 0;
  for (int i = 1; i <= 23; i += 2) {
    sum += power / i;
    power *= z * z;
  }
  return 2 * sum + exponent * ln_2;
}

// x > 0.
inline double pow(double x, double y) { return exp(y * log(x)); }

// The cosine of t full turns.
inline double cos_turns(double t) {
  constexpr double two_pi = 6.28318530717958647693;
  t = std::fabs(t - std::floor(t + 0.5));  // 0..0.5, the cosine is even
  const bool second_quarter = t > 0.25;
  const double angle = two_pi * (second_quarter ? 0.5 - t : t);
  double term = 1, sum = 1;
  for (int i = 2; i <= 20; i += 2) {
    term = -term * angle * angle / ((i - 1) * i);
    sum += term;
  }
  return second_quarter ? -sum : sum;
}

}  // namespace ppl::simulator::math
