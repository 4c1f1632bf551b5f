// Thousands of operations of every kind in a random order, each done in the host and in the plain
// model, which counts everything anew; after each, both must say the same.
#include "Ancestry.h"
#include "DataMaker.h"
#include "HostTwin.h"
#include "Kinds.h"
#include "Space.h"
#include "TestSupport.h"
#include "items/Building.h"
#include "items/Invariants.h"

#include <algorithm>
#include <map>
#include <random>

using namespace memory_host;
using plain::Host;
using plain::Item;
using plain::Items;
using plain::Kind;
using TAVIK::Compound;
using TAVIK::DataMaker;

namespace {

class Run {
public:
    explicit Run(unsigned int seed) : m_random(seed) {}

    /// Does one operation; returns its name and what differs after it.
    QStringList step() {
        const QString done = perform();
        plain::Comparison all;
        all.lines = m_faults;
        plain::compareItem(all, *m_plain.space(), TAVIK::Space::instance());
        plain::compareWalks(all, m_plain);
        for (const std::string& fault : checkInvariants())
            all.lines << QString::fromStdString(fault);
        if (!all.lines.isEmpty())
            all.lines.prepend("after " + done);
        return all.lines;
    }

private:
    int number(int from, int to) { return std::uniform_int_distribution(from, to)(m_random); }
    bool coin() { return number(0, 1) == 1; }

    // One of those that are wanted, the space among them; null when there is none.
    template <class Wanted> Item* pick(const Wanted& wanted) {
        Items items = m_plain.all();
        items.insert(items.begin(), m_plain.space());
        std::erase_if(items, [&](const Item* item) { return !wanted(*item); });
        return items.empty()
                   ? nullptr
                   : items[static_cast<std::size_t>(number(0, static_cast<int>(items.size()) - 1))];
    }
    Item* pickHolder() {
        return pick([](const Item& item) { return item.isComposite(); });
    }
    Item* pickAny() {
        return pick([](const Item&) { return true; });
    }
    Item* pickKind(Kind kind) {
        return pick([kind](const Item& item) { return item.kind == kind; });
    }

    // The host's item.
    Compound* real(const Item* item) const {
        return !item                       ? nullptr
               : item->kind == Kind::Space ? TAVIK::Space::instance()
                                           : m_real.at(item->id);
    }
    // Enters an item that the host has made, without a parent where `parent` is null.
    Item* entered(Compound* made, Kind kind, Item* parent, const Items& parts = {}) {
        m_real[made->GetId()] = made;
        Item* const item = m_plain.enter(kind, made->GetName(), made->GetId());
        item->parts = parts;
        if (parent)
            m_plain.attach(item, parent);
        m_plain.settle();
        return item;
    }
    static QString nameOf(const Item& item) {
        return QString::fromStdString(plain::kindName(item.kind) + ' ' + Host::qualifiedName(item));
    }

    QString perform() {
        const std::size_t count = m_plain.all().size() + 1;
        // Around a hundred items: enough for every constellation, few enough to recount each step.
        if (count > 120 || (count > 60 && number(0, 5) == 0))
            return destroy();
        switch (number(0, 15)) {
        case 0:
        case 1:
            return makeHolder();
        case 2:
        case 3:
        case 4:
            return makeAtom(pickHolder());
        case 5:
            return makeBond();
        case 6:
            return makeSet();
        case 7:
            return makeOther();
        case 8:
        case 9:
            return select();
        case 10:
        case 11:
            return show();
        case 12:
            return toggle();
        case 13:
            return switchModel();
        case 14:
            return attachBranch();
        default:
            return changeAtom();
        }
    }

    QString makeHolder() {
        static constexpr Kind kinds[] = {Kind::Composite, Kind::Molecule, Kind::Residue,
                                         Kind::Residue, Kind::Group};
        const Kind kind = kinds[number(0, 4)];
        Item* const parent = pickHolder();
        const bool nests = Host::nests(kind, parent);
        Compound* const made = DataMaker::makeCore(real(parent), "holder", plain::kindName(kind));
        if (made)
            entered(made, kind, parent);
        const bool told = !test_support::TestCase::takeMessages().empty();
        if (nests == (made != nullptr) || nests != told)
            m_faults << QStringLiteral("a holder in its own kind");
        return "making a " + QString::fromStdString(plain::kindName(kind));
    }

    Item* addAtomTo(Item* parent) {
        const auto model = static_cast<unsigned int>(std::max(0, number(-2, 3)));
        Compound* const made =
            addAtom(real(parent), {"CA", "C", TAVIK::Vertex(1, 2, 3, true), 10.0F, model});
        Item* const atom = entered(made, Kind::Atom, parent);
        m_plain.setAtom(*atom, {"C", {1, 2, 3}, true, 10.0F, model});
        return atom;
    }

    QString makeAtom(Item* parent) {
        addAtomTo(parent);
        return QStringLiteral("making an atom");
    }

    QString makeBond() {
        Item* const parent = pickHolder();
        Item* const a = pickKind(Kind::Atom);
        Item* const b = pickKind(Kind::Atom);
        Compound* const made = addBond(real(parent), real(a), real(b));
        const bool told = !test_support::TestCase::takeMessages().empty();
        if ((made != nullptr) != (a != b) || told != (a == b))
            m_faults << QStringLiteral("a bond of an atom with itself, or none of two");
        if (!made)
            return QStringLiteral("making no bond");
        entered(made, Kind::Bond, parent, {a, b});
        return QStringLiteral("making a bond");
    }

    QString makeSet() {
        Item* const parent = pickHolder();
        Items members;
        std::vector<Compound*> realMembers;
        for (int i = number(0, 6); i > 0; --i) {
            Item* const member = pickAny();
            realMembers.push_back(real(member));
            if (std::find(members.begin(), members.end(), member) == members.end())
                members.push_back(member);
        }
        realMembers.push_back(nullptr);
        entered(DataMaker::makeSet(real(parent), "set", realMembers), Kind::Set, parent, members);
        return QStringLiteral("making a set");
    }

    QString makeOther() {
        Item* const parent = pickHolder();
        if (coin())
            entered(DataMaker::makeCore(real(parent), "surface", "Surface"), Kind::Surface, parent);
        else
            entered(DataMaker::makePolyLine(real(parent), "line", {}), Kind::PolyLine, parent);
        return QStringLiteral("making a leaf");
    }

    QString destroy() {
        Item* const item = pick([](const Item& candidate) { return candidate.parent; });
        const QString what = "destroying " + nameOf(*item);
        Compound* const gone = real(item);
        m_plain.destroy(item);
        DataMaker::Destroy(gone);
        return what;
    }

    QString select() {
        Item* const item = pickAny();
        const bool on = coin();
        Host::setSelected(*item, on);
        real(item)->SetSelected(on);
        return (on ? "selecting " : "unselecting ") + nameOf(*item);
    }

    QString show() {
        Item* const item = pickAny();
        const bool on = coin();
        Host::setVisible(*item, on);
        real(item)->SetVisible(on);
        return (on ? "showing " : "hiding ") + nameOf(*item);
    }

    QString toggle() {
        Item* const item = pickAny();
        if (coin()) {
            Host::setSelected(*item, !Host::isSelected(*item));
            real(item)->ToggleSelected();
            return "toggling the selection of " + nameOf(*item);
        }
        Host::setVisible(*item, !Host::isVisible(*item));
        real(item)->ToggleVisible();
        return "toggling the visibility of " + nameOf(*item);
    }

    QString switchModel() {
        Item* const residue = pickKind(Kind::Residue);
        if (!residue)
            return QStringLiteral("nothing");
        const auto way = static_cast<Host::Switch>(number(0, 2));
        Host::switchModel(*residue, way);
        if (way == Host::Switch::First)
            real(residue)->FirstModel();
        else if (way == Host::Switch::Previous)
            real(residue)->PrevModel();
        else
            real(residue)->NextModel();
        return "switching the model of " + nameOf(*residue);
    }

    // A branch that is built aside and then attached, as a file reader does.
    QString attachBranch() {
        static constexpr Kind kinds[] = {Kind::Composite, Kind::Residue, Kind::Group};
        const Kind kind = kinds[number(0, 2)];
        const Kind innerKind = kind == Kind::Group ? Kind::Residue : Kind::Group;
        Item* const branch = entered(makeDetached("branch", plain::kindName(kind)), kind, nullptr);
        Item* const inner =
            entered(DataMaker::makeCore(real(branch), "inner", plain::kindName(innerKind)),
                    innerKind, branch);
        Items atoms;
        for (int i = number(0, 4); i > 0; --i)
            atoms.push_back(addAtomTo(coin() ? branch : inner));
        if (atoms.size() > 1) {
            Item* const a = atoms.front();
            Item* const b = atoms.back();
            Compound* const bond = addBond(real(branch), real(a), real(b));
            entered(bond, Kind::Bond, branch, {a, b});
        }
        if (coin()) {
            Host::setVisible(*inner, false);
            real(inner)->SetVisible(false);
        }
        Item* const parent = pickHolder();
        const bool nests = Host::nests(kind, parent) || Host::nests(innerKind, parent);
        Compound* const attached = real(branch);
        attach(attached, real(parent));
        const bool told = !test_support::TestCase::takeMessages().empty();
        if (nests == (TAVIK::GetParent(attached) != nullptr) || nests != told)
            m_faults << QStringLiteral("a branch with its own kind around it");
        if (!nests) {
            m_plain.attach(branch, parent);
            m_plain.settle();
        } else {
            m_plain.destroy(branch);
            DataMaker::Destroy(attached);
        }
        return QStringLiteral("attaching a branch");
    }

    QString changeAtom() {
        Item* const atom = pickKind(Kind::Atom);
        if (!atom)
            return QStringLiteral("nothing");
        const auto model = static_cast<unsigned int>(number(0, 3));
        if (coin()) {
            atom->model = model;
            atom->position = {4, 5, 6};
            atom->hasPosition = true;
            m_plain.settle();
            auto* const changed = dynamic_cast<TAVIK::Atom*>(real(atom));
            TAVIK::SetAtomModel(changed, model);
            TAVIK::SetAtomPosition(changed, TAVIK::Vertex(4, 5, 6, true));
            return "moving " + nameOf(*atom);
        }
        m_plain.setAtom(*atom, {"N", {}, false, 0.0F, model});
        setAtom(real(atom), {"", "N", {}, 0.0F, model});
        return "changing " + nameOf(*atom);
    }

    std::mt19937 m_random;
    Host m_plain;
    std::map<unsigned int, Compound*> m_real; ///< by id, those that are gone too
    QStringList m_faults; ///< what was refused or made that should not have been
};

} // namespace

class RandomOperationsTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void everyStepLeavesWhatAPlainModelExpects_data();
    void everyStepLeavesWhatAPlainModelExpects();
};

void RandomOperationsTest::everyStepLeavesWhatAPlainModelExpects_data() {
    QTest::addColumn<unsigned int>("seed");
    for (unsigned int seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void RandomOperationsTest::everyStepLeavesWhatAPlainModelExpects() {
    QFETCH(unsigned int, seed);
    Run run(seed);
    for (int step = 0; step != 1500; ++step) {
        const QStringList faults = run.step();
        QVERIFY2(faults.isEmpty(),
                 qPrintable(QStringLiteral("step %1: %2").arg(step).arg(faults.join(u'\n'))));
    }
}

REGISTER_TEST(RandomOperationsTest)
#include "RandomOperationsTest.moc"
