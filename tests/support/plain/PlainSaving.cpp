// What saving does in the plain model.
#include "PlainWindow.h"

#include <algorithm>

namespace plain {

void Model::save(const Step& step) {
    const Saving what = savingOf(step);
    Items entries;
    if (what == Saving::All) {
        Items unsaved;
        for (Item* entry : topLevel())
            if (files.isUnsaved(*entry) && files.isSavable(*entry) &&
                !files.nameOf(*entry).empty() && entry->kind != Kind::Grid)
                unsaved.push_back(entry);
        for (Item* entry : unsaved) {
            const Items together = files.together(entry, topLevel());
            const auto isFirst = std::find_first_of(unsaved.begin(), unsaved.end(),
                                                    together.begin(), together.end());
            if (*isFirst == entry)
                saveAs(together, files.nameOf(*entry), {}, step);
        }
    } else if (what == Saving::SelectionAs) {
        for (Item* entry : topLevel())
            if (Host::hasSelected(*entry) && files.isSavable(*entry) && entry->kind != Kind::Grid)
                entries.push_back(entry);
        if (!entries.empty())
            saveAs(entries, step.name, {.onlySelected = true}, step);
    } else if (const int entry = countedRound(step.target, topLevel().size()); entry >= 0) {
        Item* const item = topLevel()[std::size_t(entry)];
        if (!files.isSavable(*item))
            return;
        const bool asks =
            what != Saving::File || files.nameOf(*item).empty() || item->kind == Kind::Grid;
        saveAs(files.together(item, topLevel()), asks ? step.name : files.nameOf(*item),
               {.onlyActive = what == Saving::ShownAs}, step);
    }
}

void Model::saveAs(const Items& entries, const std::string& name, SaveChoice choice,
                   const Step& step) {
    for (;;) {
        Refused why{};
        switch (files.save(entries, name, choice, why)) {
        case SaveOutcome::Saved:
            said.asked << QStringLiteral("saved as ") + QString::fromStdString(name);
            return;
        case SaveOutcome::Refused:
            said.asked << QString::fromLatin1(refusedTexts[int(why)]);
            return;
        case SaveOutcome::ChangedByOthers:
            said.asked << QStringLiteral("changed by others");
            choice.replaceChanged = true;
            break;
        case SaveOutcome::LosesClosed:
            said.asked << QStringLiteral("loses closed entries");
            choice.dropClosed = true;
            break;
        }
        if (step.answer == Answer::Cancel)
            return;
    }
}

} // namespace plain
