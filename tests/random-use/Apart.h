// Playing sessions in a process of their own, so that a crash is an outcome like any other.
#pragma once

#include "Sessions.h"

namespace random_use {

/// As play(), but where the process ends or hangs, the outcome says so. What it writes to the error
/// stream is not shown.
Outcome playApart(const Session& session);
/// As play(); `session` holds the steps up to the last one that has begun.
Outcome playApart(Session& session, Theme theme, unsigned int seed, std::size_t count);

} // namespace random_use
