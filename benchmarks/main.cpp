// benchmarks [--only=TEXT] [--without=TEXT...] [--long] [--plots=FILE] STRUCTURES COPIES...: times
// our works beside their competitors on so many copies of the ribosome each, and writes the table
// to standard output. With --only, just the works whose name holds TEXT, with --without just the
// others; with --long, also competitors that take minutes; with --plots, also a picture of all
// times. 0 copies are the ribosome's first atoms: a quick check that all works can be done.
#include "Contest.h"
#include "RealStructures.h"
#include "Works.h"
#include "services/DataFolder.h"
#include "services/Log.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    const char* const program = argv[0];
    std::string plots;
    for (; argc > 1 && argv[1][0] == '-'; --argc, ++argv) {
        const std::string option = argv[1];
        if (option.rfind("--only=", 0) == 0)
            benchmarks::runOnly(option.substr(option.find('=') + 1));
        else if (option.rfind("--without=", 0) == 0)
            benchmarks::leaveOut(option.substr(option.find('=') + 1));
        else if (option == "--long")
            benchmarks::runLong();
        else if (option.rfind("--plots=", 0) == 0)
            plots = option.substr(option.find('=') + 1);
        else
            argc = 1;
    }
    if (argc < 3) {
        std::fprintf(stderr,
                     "usage: %s [--only=TEXT] [--without=TEXT...] [--long] [--plots=FILE] "
                     "STRUCTURES COPIES...\n",
                     program);
        return 2;
    }
    memory_host::setLogFile(QString());
    memory_host::setDataFolder(QStringLiteral(DATA_FOLDER));
    // Messages of the commands are not timed.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    try {
        const std::string structures = argv[1];
        for (const char* const name : {"/1ubq.pdb", "/1cbs.cif.gz"})
            benchmarks::benchmarkPictures(structures + name, 5);
        for (const char* const name : {"/1ubq.pdb", "/1cbs.cif.gz"})
            benchmarks::benchmarkSurfaces(structures + name, 3);
        for (const char* const name : {"/1ubq.pdb", "/1cbs.cif.gz", "/1tii.pdb"})
            benchmarks::benchmarkAreas(structures + name, 3);
        benchmarks::benchmarkPotentials(structures + "/1cbs.cif.gz", 3);
        benchmarks::benchmarkContours(structures, 5);
        for (int i = 2; i < argc; ++i) {
            const int copies = std::atoi(argv[i]);
            const std::string path = benchmarks::ribosomeFile(argv[1], copies);
            const int turns = copies > 20 ? 2 : copies > 1 ? 3 : copies > 0 ? 5 : 1;
            benchmarks::benchmarkFiles(path, turns);
            benchmarks::benchmarkSaving(path, turns);
            benchmarks::benchmarkJournal(path, turns);
            benchmarks::benchmarkTree(path, turns);
            benchmarks::benchmarkCommands(path, turns);
            benchmarks::benchmarkPictures(path, turns);
            if (copies > 0 && copies <= 6)
                benchmarks::benchmarkSurfaces(path, turns);
            if (copies == 1) {
                benchmarks::benchmarkAreas(path, turns);
                benchmarks::benchmarkPotentials(path, turns);
            }
            benchmarks::benchmarkView(path, turns);
            benchmarks::benchmarkFind(path, turns);
            benchmarks::benchmarkRotamers(path, turns);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", program, error.what());
        return 1;
    }
    benchmarks::writeTable(std::cout);
    if (!plots.empty()) {
        std::ofstream file(plots);
        benchmarks::writePlots(file);
        if (!file.flush()) {
            std::fprintf(stderr, "%s: cannot write %s\n", program, plots.c_str());
            return 1;
        }
    }
    return 0;
}
