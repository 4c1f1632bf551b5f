// What nearly every test includes.
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
