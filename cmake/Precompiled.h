// What most sources of libraries and programs include.
#pragma once

#include <QString>
#include <QWidget>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>
