#include "Contest.h"
#include "DataMaker.h"
#include "Messages.h"
#include "Space.h"
#include "Traversal.h"
#include "Works.h"
#include "files/Files.h"
#include "services/PluginFolder.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace benchmarks {

namespace {

// Counts what the plug-in says of the residues.
class Lines : public MessageObserver {
public:
    void messageShown(const QString& text) override {
        added += text.contains(QLatin1String(" are its models ")) ? 1 : 0;
    }
    std::size_t added = 0;
};

void destroyAll() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    while (space->ChildBegin() != space->ChildEnd())
        TAVIK::DataMaker::Destroy(*space->ChildBegin());
}

} // namespace

void benchmarkRotamers(const std::string& path, int turns) {
    constexpr std::size_t most = 1000;
    const std::string work = "\"Rotamers\" of " + std::to_string(most) + " residues";
    if (!isWanted(work))
        return;
    const QTemporaryDir folder;
    QDir(folder.path()).mkdir(QStringLiteral("Create"));
    const QString copy = folder.filePath(QStringLiteral("Create/libRotamer.so"));
    if (!QFile::copy(QStringLiteral(ROTAMER_PLUGIN), copy) ||
        memory_host::loadPlugins(folder.path()).size() != 1)
        throw std::runtime_error("the plug-in " ROTAMER_PLUGIN " cannot be loaded");
    std::size_t atoms = 0;
    std::size_t chosen = 0;
    std::unique_ptr<Vuxo> window;
    // Each turn has a new structure, as the models of the last one stay.
    const auto prepare = [&] {
        window.reset();
        destroyAll();
        memory_host::openFile(path);
        TAVIK::Compound* const item = *TAVIK::Space::instance()->ChildBegin();
        std::vector<TAVIK::Compound*> items;
        TAVIK::GetAtoms(item, items, true);
        atoms = items.size();
        items.clear();
        TAVIK::GetResidues(item, items, true);
        std::erase_if(items, [](TAVIK::Compound* residue) {
            static const std::vector<std::string> wanted = {"ARG", "LEU", "LYS", "VAL", "ILE"};
            const std::string name = residue->GetName();
            return std::find(wanted.begin(), wanted.end(), name.substr(0, name.find(' '))) ==
                   wanted.end();
        });
        chosen = std::min(most, items.size());
        for (std::size_t i = 0; i != chosen; ++i)
            items[i * items.size() / chosen]->SetSelected(true);
        window = std::make_unique<Vuxo>();
        window->Populate(0);
        window->show();
        QApplication::processEvents();
    };
    prepare();
    const Lines lines;
    run({.work = work,
         .size = atoms,
         .items = std::max<std::size_t>(chosen, 1), // the ribosome begins with nucleic acid
         .itemName = "residue",
         .ours = {prepare,
                  [&] {
                      window->SelectedRotamers();
                      QApplication::processEvents();
                  },
                  {}}},
        std::min(turns, 2));
    if (chosen > 0 && lines.added == 0)
        throw std::runtime_error("the plug-in added hardly any rotamers");
    window.reset();
    memory_host::unloadPlugins();
    destroyAll();
}

} // namespace benchmarks
