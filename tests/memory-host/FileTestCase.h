// What the tests of the structure readers start from: a folder for files whose text a test writes.
#pragma once

#include "FileTesting.h"
#include "TestSupport.h"

namespace file_testing {

class FileTestCase : public test_support::TestCase {
protected:
    /// `usualName` is what a file is called where a test does not say.
    explicit FileTestCase(const QString& usualName = QStringLiteral("test.pdb"))
        : m_usualName(usualName) {}

    /// Writes a file and opens it; see opened().
    memory_host::OpenedFile openText(const QByteArray& text, const QStringList& remarks = {},
                                     const QString& name = {}) {
        return opened(m_folder.write(name.isEmpty() ? m_usualName : name, text), remarks);
    }
    /// Where the file of that name stands.
    QString path(const QString& name = {}) const {
        return m_folder.path() + u'/' + (name.isEmpty() ? m_usualName : name);
    }

    Folder m_folder;

private:
    QString m_usualName;
};

} // namespace file_testing
