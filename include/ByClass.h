// The cache by class, for plug-ins and programs.
#pragma once

#include "detail/ByClass.h"

using TAVIK::detail::ByClass;
