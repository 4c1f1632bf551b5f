#include "Files.h"

#include "BuildStructure.h"
#include "Changed.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "EntryNames.h"
#include "EntrySource.h"
#include "Fields.h"
#include "FileKind.h"
#include "FileLimits.h"
#include "Readers.h"
#include "Space.h"
#include "items/Building.h"
#include "items/Origins.h"

#include <algorithm>
#include <optional>
#include <set>

namespace memory_host {

class ParsedFile {
public:
    explicit ParsedFile(const std::string& path) : report(path) {}

    FileReport report;
    std::string stem; ///< the file's name without its endings
    FileContent content;
    std::shared_ptr<const SourceText> text; ///< null for maps
    std::shared_ptr<FileOnDisk> file = std::make_shared<FileOnDisk>();
    std::shared_ptr<FileReading> reading = std::make_shared<FileReading>();
};

void ParsedFileDeleter::operator()(ParsedFile* file) const {
    delete file;
}

namespace {

// The parts of a path: the file's name without endings, and the format of the ending.
struct FileName {
    explicit FileName(std::string_view path) {
        // The path of a file descriptor ends in a number, which is no name.
        for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"})
            if (path.starts_with(folder))
                path = path.substr(folder.size()) == "0" ? "stdin" : "pipe";
        const std::size_t slash = path.find_last_of('/');
        std::string_view name = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
        if (constexpr std::string_view packed = ".gz";
            name.size() > packed.size() && endsWith(name, packed))
            name.remove_suffix(packed.size());
        format = takeEnding(name);
        stem = asLatin1Component(name);
    }
    const FileFormat* format = nullptr;
    std::string stem;
};

std::size_t lineOf(std::string_view text, std::size_t at) {
    return 1 + static_cast<std::size_t>(
                   std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

std::string describeMissingMark(const FileFormat& format) {
    return "is no " + std::string(format.name) +
           (format.holds == FileFormat::Holds::Map ? " map" : " file") + ": it has no " +
           std::string(format.mark);
}

// Refuses text with zero bytes, which no text format contains.
void checkText(std::string_view text, const FileName& name, const FileReport& report) {
    const std::size_t null = text.find('\0');
    if (null == std::string_view::npos)
        return;
    if (name.format && name.format->form == FileFormat::Form::Binary)
        report.refuse(0, describeMissingMark(*name.format), acceptedFiles());
    const bool isText = null >= 4096;
    report.refuse(isText ? lineOf(text, null) : 0,
                  isText ? "has a byte 0 in its text: it is damaged"
                         : "holds binary data of an unknown kind",
                  acceptedFiles());
}

// Refuses bytes that are neither text nor of a known binary format.
void checkKind(std::string_view bytes, const FileName& name, const FileReport& report) {
    if (binaryFormatOf(bytes))
        return;
    const ForeignKind foreign = foreignKind(bytes);
    if (!foreign.what.empty())
        report.refuse(0, foreign.what, foreign.accepted);
    checkText(bytes, name, report);
}

// The same for the first megabyte of a longer file, which must also begin like a structure.
void checkBeginning(std::string_view bytes, const FileName& name, const FileReport& report) {
    checkKind(bytes, name, report);
    if (!binaryFormatOf(bytes) && !beginsLikeText(bytes, name.format))
        report.refuse(0, "is no structure: its first megabyte has no record of a PDB file",
                      acceptedFiles());
}

// A text as readers take it. Some editors write a byte order mark, which is no part of it.
Bytes readableText(std::shared_ptr<const Bytes> text) {
    constexpr std::string_view mark = "\xef\xbb\xbf";
    Bytes readable(std::move(text));
    if (readable.text().starts_with(mark))
        readable.removeFront(mark.size());
    if (readable.haveLoneReturns())
        readable.unifyLineEnds();
    return readable;
}

void parseText(ParsedFile& file, ReadBytes read, const FileName& name) {
    const auto original = std::make_shared<const Bytes>(std::move(read.text));
    Bytes readable = readableText(original);
    const FileFormat& format = textFormatOf(readable.text(), name.format);
    if (format.holds == FileFormat::Holds::Structure)
        file.text = read.gzipped.size() == 0
                        ? std::make_shared<const SourceText>(original, format)
                        : std::make_shared<const SourceText>(std::move(read.gzipped),
                                                             original->size(), format);
    file.content = format.read(std::move(readable), name.stem, file.report);
}

void parseInto(ParsedFile& file, std::stop_token stop) {
    const FileName name(file.report.path());
    ReadBytes read = readFile(
        file.report,
        [&](std::string_view beginning) { checkBeginning(beginning, name, file.report); },
        std::move(stop));
    checkKind(read.text.text(), name, file.report);
    file.stem = name.stem;
    file.file->stamp = read.stamp;
    if (const FileFormat* format = binaryFormatOf(read.text.text()))
        file.content = format->read(std::move(read.text), name.stem, file.report);
    else
        parseText(file, std::move(read), name);
}

// Runs reading or building; any exception becomes one line about the file.
template <class Work> auto guarded(const FileReport& report, Work work) {
    try {
        return work();
    } catch (const FileError&) {
        throw;
    } catch (const std::bad_alloc&) {
        report.refuseForMemory();
    } catch (const std::exception& error) {
        report.refuse(0, std::string("cannot be opened: ") + error.what(), acceptedFiles());
    }
}

// The endings of the names of an entry's models: the file's numbers, if they are all different.
std::vector<std::string> modelEndings(const StructureTable& structure) {
    if (structure.models.size() == 1)
        return {std::string()};
    std::set<std::string_view> numbers;
    bool areNumbers = true;
    for (const ModelTable& model : structure.models)
        areNumbers = areNumbers && !model.number.empty() &&
                     std::ranges::all_of(model.number, isDigit) &&
                     numbers.insert(model.number).second;
    std::vector<std::string> endings;
    for (const ModelTable& model : structure.models)
        endings.push_back('.' + (areNumbers ? model.number : std::to_string(endings.size() + 1)));
    return endings;
}

std::shared_ptr<EntrySource> makeSource(const ParsedFile& file, std::size_t block,
                                        std::size_t model) {
    auto source = std::make_shared<EntrySource>();
    source->text = file.text;
    source->file = file.file;
    source->reading = file.reading;
    source->block = static_cast<std::uint32_t>(block);
    source->model = static_cast<std::uint32_t>(model);
    return source;
}

std::vector<DetachedItem> build(ParsedFile& file, const Progress& progress) {
    std::vector<DetachedItem> items;
    std::size_t work = 0;
    std::size_t bytes = 0;
    for (const StructureTable& structure : file.content.structures) {
        for (const ModelTable& model : structure.models) {
            work += workOf(model);
            bytes += memoryOf(model);
        }
    }
    requireMemory(file.report, bytes);
    ProgressCounter counter(progress, "building the atoms", work);
    EntryNames entryNames;
    const std::uint32_t lastBefore = HostItem::lastIdentifier();
    for (std::size_t block = 0; block != file.content.structures.size(); ++block) {
        StructureTable& structure = file.content.structures[block];
        const std::vector<std::string> names =
            entryNames.take(structure.name, modelEndings(structure));
        BuildScratch scratch;
        for (std::size_t i = 0; i != names.size(); ++i) {
            const std::shared_ptr<EntrySource> source = makeSource(file, block, i);
            items.push_back(buildModel(std::move(structure.models[i]), structure, names[i], *source,
                                       scratch, counter));
            setOrigin(items.back().get(), file.report.path(), source);
        }
    }
    file.content.structures.clear();
    if (file.content.grid) {
        items.emplace_back(
            makeDetached(entryNames.take(file.stem, {std::string()}).front(), "Grid"));
        setGrid(items.back().get(), std::move(*file.content.grid));
        setCrystal(items.back().get(), file.content.crystal);
        file.content.grid.reset();
        setOrigin(items.back().get(), file.report.path(), makeSource(file, 0, 0));
    }
    for (const DetachedItem& item : items)
        file.file->entries.push_back(item->GetId());
    std::ranges::sort(file.file->entries);
    *file.reading = {originPath(items.front().get()), file.file->stamp, lastBefore + 1,
                     HostItem::lastIdentifier() - lastBefore};
    return items;
}

// Attaches all items, or none.
std::vector<TAVIK::Compound*> attachAll(std::vector<DetachedItem>& items,
                                        const FileReport& report) {
    DataPointBase guard(nullptr, Publisher::Add, "Open");
    if (!guard.m_good)
        report.refuse(0, "the data space is in use, so that nothing can be added",
                      "accepted is trying again when the change in progress is done");
    TAVIK::Changed opened("entry");
    for (const DetachedItem& item : items)
        opened.add(item.get());
    setLabel(guard, "Open", opened);
    std::vector<TAVIK::Compound*> attached;
    try {
        attached.reserve(items.size());
        for (const DetachedItem& item : items) {
            attach(item.get(), TAVIK::Space::instance());
            attached.push_back(item.get());
        }
    } catch (...) {
        items.clear(); // Before the guard ends and subscribers read the space.
        throw;
    }
    for (DetachedItem& item : items)
        (void)item.release();
    return attached;
}

} // namespace

ParsedFilePtr parseFile(const std::string& path, std::stop_token stop) {
    const FileReport report(path);
    return guarded(report, [&] {
        ParsedFilePtr file(new ParsedFile(path));
        parseInto(*file, stop);
        return file;
    });
}

OpenedFile openParsed(ParsedFile& file, const Progress& progress) {
    return guarded(file.report, [&] {
        if (file.content.structures.empty() && !file.content.grid)
            file.report.refuse(0, "was opened already", "accepted is parsing it once more");
        std::vector<DetachedItem> items = build(file, progress);
        OpenedFile opened{{}, file.report.remarks()};
        opened.items = attachAll(items, file.report); // Last: nothing fails afterwards.
        return opened;
    });
}

OpenedFile openFile(const std::string& path) {
    return openParsed(*parseFile(path), {});
}

} // namespace memory_host
