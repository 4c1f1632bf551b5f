// The cache by class, for plug-ins.
#pragma once

#include "detail/ByClass.h"

using TAVIK::detail::ByClass;
