// What every test class shares: registration by name, and a log that no line passes unnoticed. A
// class derives from TestCase and writes REGISTER_TEST(Class) once; anything that is written to
// the debug stream or the host's log and not taken by the test fails it.
#pragma once

#include <QObject>
#include <QStringList>
#include <QTest>

#include <functional>
#include <string>

namespace test_support {

class TestCase : public QObject {
    Q_OBJECT
public:
    /// The debug and warning lines since the last call, oldest first.
    static QStringList takeMessages();
    /// The lines of the host's log since the last call, oldest first.
    static QStringList takeHostLog();
    /// The path of a real structure file by its name, as "1ubq.pdb".
    static QString structure(const QString& name);

protected slots:
    /// Starts every test function with an empty space and empty logs. An override calls it first.
    virtual void init();
    /// Fails the function when a line was left in a log, then empties the space.
    virtual void cleanup();
};

void registerTest(const char* name, const std::function<QObject*()>& make);

template <class Test> struct Registration {
    explicit Registration(const char* name) {
        registerTest(name, [] { return new Test; });
    }
};

} // namespace test_support

#define REGISTER_TEST(Class) static const test_support::Registration<Class> registration(#Class);
