// For Clang 14, included before a source: std::vector as before C++20, without constexpr. With
// constexpr that compiler requires complete element types of member vectors, which gemmi's CIF
// items are not.
#pragma once

#include <algorithm>
#include <memory>
#include <string>

#ifndef _GLIBCXX_VECTOR
#pragma push_macro("_GLIBCXX20_CONSTEXPR")
#undef _GLIBCXX20_CONSTEXPR
#define _GLIBCXX20_CONSTEXPR
// Already declared with constexpr. Only vectors of bits use it, and the source fills none.
#define __fill_a1 fillBits // NOLINT
#include <vector>
#undef __fill_a1
#pragma pop_macro("_GLIBCXX20_CONSTEXPR")
#endif
