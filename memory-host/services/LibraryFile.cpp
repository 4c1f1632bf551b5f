#include "LibraryFile.h"

#include "items/Subscribers.h"

#include <QApplication>
#include <QFile>

#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

namespace memory_host {

namespace {

/// The base address of the loaded library that contains `address`; null if there is none.
const void* libraryOf(const void* address) {
    Dl_info info{};
    return dladdr(address, &info) ? info.dli_fbase : nullptr;
}

/// The base address of the library that contains the vtable of an object's class.
const void* libraryOfClass(const void* object) {
    return libraryOf(*static_cast<const void* const*>(object));
}

} // namespace

std::string libraryProblem(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return "it cannot be read: " + file.errorString().toStdString();
    ElfW(Ehdr) header{};
    const QByteArray start = file.read(sizeof header);
    if (!start.startsWith(ELFMAG))
        return "it is not a shared library";
    if (start.size() < static_cast<qsizetype>(sizeof header))
        return "it is cut off";
    std::memcpy(&header, start.constData(), sizeof header);
    // A library for another architecture has another header; the loader's message is clear.
    if (header.e_ident[EI_CLASS] != (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32) ||
        header.e_phentsize != sizeof(ElfW(Phdr)))
        return {};
    if (!file.seek(static_cast<qint64>(header.e_phoff)))
        return "it is cut off";
    for (int i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment{};
        if (file.read(reinterpret_cast<char*>(&segment), sizeof segment) != sizeof segment)
            return "it is cut off";
        const auto size = static_cast<ElfW(Off)>(file.size());
        if (segment.p_type == PT_LOAD &&
            (segment.p_filesz > size || segment.p_offset > size - segment.p_filesz))
            return "it is cut off: a part of it lies behind its end at " +
                   std::to_string(file.size()) + " bytes";
    }
    return {};
}

bool isOfLibrary(const QWidget& widget, const void* address) {
    const void* const library = libraryOf(address);
    return libraryOfClass(&widget) == library || libraryOf(widget.metaObject()) == library;
}

QList<QPointer<QWidget>> widgetsOfLibrary(const void* address) {
    QList<QPointer<QWidget>> found;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return found;
    for (QWidget* widget : QApplication::allWidgets()) {
        if (isOfLibrary(*widget, address))
            found << widget;
    }
    return found;
}

std::size_t subscribersOfLibrary(const void* address) {
    const void* const library = libraryOf(address);
    std::size_t count = 0;
    for (const void* subscriber : listeners())
        if (libraryOfClass(subscriber) == library && libraryOf(subscriber) != library)
            ++count;
    return count;
}

} // namespace memory_host
