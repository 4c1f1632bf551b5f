// What nearly every test includes, compiled once for each program of tests. A source includes what
// it needs all the same: builds with a compiler cache do without this.
#pragma once

#include <QApplication>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>
