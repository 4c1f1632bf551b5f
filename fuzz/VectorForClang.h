// For Clang 14, included in front of a source: std::vector as before C++20, without constexpr. That
// compiler else wants the elements of a member vector complete, which gemmi's CIF items are not.
#pragma once

#include <algorithm>
#include <memory>
#include <string>

#ifndef _GLIBCXX_VECTOR
#pragma push_macro("_GLIBCXX20_CONSTEXPR")
#undef _GLIBCXX20_CONSTEXPR
#define _GLIBCXX20_CONSTEXPR
// Declared with constexpr before; for vectors of bits, which the source does not fill.
#define __fill_a1 fillBits // NOLINT
#include <vector>
#undef __fill_a1
#pragma pop_macro("_GLIBCXX20_CONSTEXPR")
#endif
