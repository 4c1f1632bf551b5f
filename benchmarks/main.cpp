// benchmarks [--only=TEXT] STRUCTURES COPIES...: times our works beside their competitors on so many
// copies of the ribosome each, and writes the table to standard output. With --only, just the works
// whose name holds TEXT.
#include "Contest.h"
#include "RealStructures.h"
#include "Services.h"
#include "Works.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    const char* const program = argv[0];
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (constexpr std::string_view only = "--only="; option.substr(0, only.size()) == only) {
        benchmarks::runOnly(std::string(option.substr(only.size())));
        --argc;
        ++argv;
    }
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s [--only=TEXT] STRUCTURES COPIES...\n", program);
        return 2;
    }
    memory_host::setLogFile(QString());
    memory_host::setDataFolder(QStringLiteral(DATA_FOLDER));
    // What a command says of itself is not what is timed.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    try {
        for (int i = 2; i < argc; ++i) {
            const int copies = std::atoi(argv[i]);
            const std::string path = benchmarks::ribosomeFile(argv[1], copies);
            // Ten million atoms are more than some of the competitors can hold.
            const bool huge = copies > 20;
            const int turns = huge ? 2 : copies > 1 ? 3 : 5;
            if (!huge) {
                benchmarks::benchmarkFiles(path, turns);
                benchmarks::benchmarkTree(path, turns);
            }
            benchmarks::benchmarkCommands(path, turns);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program, error.what());
        return 1;
    }
    benchmarks::writeTable(std::cout);
    return 0;
}
