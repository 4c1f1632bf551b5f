// What the contract's tests share: short ways to make items, and a subscriber that writes down what
// it hears.
#pragma once

#include "AtomDetails.h"
#include "DataMaker.h"
#include "HostUnderTest.h"
#include "Kinds.h"
#include "Space.h"
#include "Subscriber.h"

#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace contract {

using TAVIK::Compound;

inline Compound* space() {
    return TAVIK::Space::instance();
}

inline Compound* make(Compound* parent, const std::string& kind, const std::string& name = "item") {
    return TAVIK::DataMaker::makeCore(parent, name, kind);
}

/// An atom at (x, 0, 0).
inline Compound* atom(Compound* parent, float x = 0.0F, const std::string& name = "CA",
                      unsigned int alternative = 0) {
    return TAVIK::DataMaker::makeAtom(
        parent, {name, "C", TAVIK::Vertex(x, 0.0F, 0.0F, true), 20.0F, alternative});
}

inline std::vector<Compound*> childrenOf(Compound* item) {
    return {item->ChildBegin(), item->ChildEnd()};
}

inline std::vector<Compound*> partsOf(Compound* item) {
    return {item->PartBegin(), item->PartEnd()};
}

using Items = std::vector<Compound*>;

/// A chain of `residues` residues, each with the groups "Backbone" (atoms N, CA, C) and "Side
/// chain" (atom CB), and bonds between neighbours.
struct Chain {
    explicit Chain(int residues);

    Compound* molecule;
    Items residues;
    Items groups; ///< two for each residue
    Items atoms;
    Items bonds;
};

/// Writes "NAME update", "NAME add" or "NAME delete" into a list, then does what `m_answer` says.
class Listener : public Subscriber {
public:
    explicit Listener(QStringList& heard, const QString& name = QStringLiteral("a"))
        : m_heard(heard), m_name(name) {}
    void commUpdate() override { hear("update"); }
    void commAdd() override { hear("add"); }
    void commDelete() override { hear("delete"); }

    std::function<void()> m_answer;

private:
    void hear(const char* kind) {
        m_heard << m_name + u' ' + QLatin1String(kind);
        if (m_answer)
            m_answer();
    }

    QStringList& m_heard;
    QString m_name;
};

/// Compares with the host's own opinion of its data; for the end of a test function.
QString faults();

} // namespace contract
