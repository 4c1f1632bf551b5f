#include "MmcifReferences.h"

#include "MmcifName.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

namespace memory_host::mmcif {

namespace {

// Which parts a row gives beside the place in the chain. Those of a residue come first.
enum Form : std::uint8_t { OfResidue = 1, OfModel = 2, OfAtom = 4, OfLetter = 8 };
constexpr std::uint8_t residueForms = 4;
constexpr std::uint8_t formCount = 16;

std::uint8_t formOf(const Name& name) {
    return static_cast<std::uint8_t>(
        (name.residue.empty() ? 0 : OfResidue) | (name.model.empty() ? 0 : OfModel) |
        (name.atom.empty() ? 0 : OfAtom) | (name.letter.empty() ? 0 : OfLetter));
}

const std::string& targetKey(std::string& key, std::uint32_t site, std::uint8_t form,
                             const Name& name) {
    key = std::to_string(site);
    key.push_back(static_cast<char>('A' + form));
    if ((form & OfResidue) != 0)
        appendPart(key, name.residue);
    if ((form & OfModel) != 0)
        appendPart(key, name.model);
    if ((form & OfAtom) != 0)
        appendPart(key, name.atom);
    if ((form & OfLetter) != 0)
        appendPart(key, name.letter);
    return key;
}

const cif::Category* find(std::span<const cif::Category> categories, std::string_view name) {
    const auto found = std::ranges::find(categories, name, &cif::Category::name);
    return found == categories.end() ? nullptr : &*found;
}

// The values of a row by which others belong to it, or it to others.
class RowKey {
public:
    RowKey(const cif::Category& category, const RowLink::Columns& columns) {
        for (const std::string_view column : columns)
            if (!column.empty())
                m_columns.push_back(category.column(column));
        m_isComplete = std::ranges::all_of(
            m_columns, [&](std::size_t column) { return column < category.columns.size(); });
    }
    bool isComplete() const { return m_isComplete; }
    const std::string& of(const cif::Rows& row) {
        m_key.clear();
        for (const std::size_t column : m_columns)
            appendPart(m_key, contentOf(row[column]));
        return m_key;
    }

private:
    std::vector<std::size_t> m_columns;
    bool m_isComplete;
    std::string m_key;
};

// Drops the rows that belong to dropped rows of another category.
class LinkedRows {
public:
    LinkedRows(std::string_view text, std::span<const cif::Category> categories,
               std::vector<RowFate>& fates)
        : m_text(text), m_categories(categories), m_fates(fates) {}

    void dropLinked(const RowLink& link);
    void countAgain(const RowCount& count);

private:
    struct Count {
        std::size_t dropped = 0;
        std::size_t kept = 0;
    };
    RowFate& fateOf(const cif::Category& category) {
        return m_fates[static_cast<std::size_t>(&category - m_categories.data())];
    }
    std::unordered_map<std::string, Count> counted(const cif::Category& category,
                                                   std::string_view id);

    std::string_view m_text;
    std::span<const cif::Category> m_categories;
    std::vector<RowFate>& m_fates;
};

void LinkedRows::dropLinked(const RowLink& link) {
    const cif::Category* const parent = find(m_categories, link.parent);
    const cif::Category* const child = find(m_categories, link.child);
    if (!parent || !child || fateOf(*parent).dropCount == 0)
        return;
    RowKey parentKey(*parent, link.parentColumns);
    RowKey childKey(*child, link.childColumns);
    if (!parentKey.isComplete() || !childKey.isComplete())
        return;
    std::unordered_set<std::string> gone;
    cif::Rows parents(m_text, *parent);
    for (std::size_t row = 0; parents.next(); ++row)
        if (fateOf(*parent).drops(row))
            gone.insert(parentKey.of(parents));
    cif::Rows children(m_text, *child);
    for (std::size_t row = 0; children.next(); ++row)
        if (gone.contains(childKey.of(children)))
            fateOf(*child).drop(row, child->rowCount);
}

std::unordered_map<std::string, LinkedRows::Count>
LinkedRows::counted(const cif::Category& category, std::string_view id) {
    std::unordered_map<std::string, Count> counts;
    RowKey key(category, {id, {}});
    cif::Rows rows(m_text, category);
    for (std::size_t row = 0; key.isComplete() && rows.next(); ++row) {
        Count& count = counts[key.of(rows)];
        ++(fateOf(category).drops(row) ? count.dropped : count.kept);
    }
    return counts;
}

void LinkedRows::countAgain(const RowCount& link) {
    const cif::Category* const category = find(m_categories, link.category);
    const cif::Category* const child = find(m_categories, link.counted);
    if (!category || !child || fateOf(*child).dropCount == 0)
        return;
    auto counts = counted(*child, link.countedId);
    RowKey key(*category, {link.id, {}});
    const std::size_t column = category->column(link.count);
    cif::Rows rows(m_text, *category);
    for (std::size_t row = 0; key.isComplete() && rows.next(); ++row) {
        const Count count = counts[key.of(rows)];
        if (count.dropped == 0)
            continue;
        if (count.kept == 0)
            fateOf(*category).drop(row, category->rowCount);
        else if (column < category->columns.size() && !contentOf(rows[column]).empty())
            fateOf(*category).updates.push_back({row, {column, std::to_string(count.kept)}});
    }
}

} // namespace

void RowFate::drop(std::size_t row, std::size_t rowCount) {
    isDropped.resize(rowCount);
    dropCount += isDropped[row] ? 0 : 1;
    isDropped[row] = true;
}

// Notes what rows name.
class References::Namer {
public:
    explicit Namer(References& references) : m_references(references) {}

    std::uint32_t target(const Name& name, std::uint8_t form) {
        Site& site = m_references.m_sites
                         .try_emplace(siteKey(m_key, name),
                                      Site{static_cast<std::uint32_t>(m_references.m_sites.size())})
                         .first->second;
        site.forms |= static_cast<std::uint16_t>(1U << form);
        const auto [known, isNew] = m_references.m_targetNumbers.try_emplace(
            targetKey(m_key, site.number, form, name),
            static_cast<std::uint32_t>(m_references.m_targets.size()));
        if (isNew)
            m_references.m_targets.emplace_back();
        return known->second;
    }

private:
    References& m_references;
    std::string m_key;
};

// Finds what is named of the atoms, by the author's ids or by the label ids. The rows of a residue
// mostly follow each other, and are looked up once.
class References::AtomWalk {
public:
    AtomWalk(References& references, bool byLabel)
        : m_references(references), m_last(PartValues(), byLabel) {}

    void see(const PartValues& values, bool isKept) {
        const Name name(values, m_last.byLabel);
        if (m_isFirst || !name.isInResidue(m_last))
            startResidue(name);
        m_isFirst = false;
        m_last = name;
        if (!m_site)
            return;
        for (const std::uint32_t target : m_ofResidue)
            mark(target, isKept);
        for (std::uint8_t form = residueForms; form != formCount; ++form)
            if ((m_site->forms >> form & 1U) != 0)
                mark(targetOf(name, form), isKept);
    }

private:
    void startResidue(const Name& name) {
        if (m_isFirst || !name.isAtSite(m_last)) {
            const auto found = m_references.m_sites.find(siteKey(m_key, name));
            m_site = found == m_references.m_sites.end() ? nullptr : &found->second;
        }
        m_ofResidue.fill(noTarget);
        for (std::uint8_t form = 0; m_site && form != residueForms; ++form)
            if ((m_site->forms >> form & 1U) != 0)
                m_ofResidue[form] = targetOf(name, form);
    }
    std::uint32_t targetOf(const Name& name, std::uint8_t form) {
        const auto found =
            m_references.m_targetNumbers.find(targetKey(m_key, m_site->number, form, name));
        return found == m_references.m_targetNumbers.end() ? noTarget : found->second;
    }
    void mark(std::uint32_t target, bool isKept) {
        if (target == noTarget)
            return;
        m_references.m_targets[target].wasThere = true;
        m_references.m_targets[target].isThere |= isKept;
    }

    References& m_references;
    Name m_last;
    bool m_isFirst = true;
    const Site* m_site = nullptr;
    std::array<std::uint32_t, residueForms> m_ofResidue{};
    std::string m_key;
};

References::References(std::string_view text, std::span<const cif::Category> categories)
    : m_text(text), m_categories(categories) {
    for (std::size_t i = 0; i != categories.size(); ++i)
        readCategory(i);
}

void References::readCategory(std::size_t category) {
    const std::optional<Naming> naming = namingOf(m_categories[category]);
    if (!naming)
        return;
    Namer namer(*this);
    // What names an atom names its residue as well.
    Named named{category, 2 * naming->partners.size(), {}};
    cif::Rows rows(m_text, m_categories[category]);
    while (rows.next()) {
        for (const PartColumns& columns : naming->partners) {
            const PartValues values = valuesOf(rows, columns);
            const Name name(values,
                            values[PartAuthorChain].empty() || values[PartAuthorNumber].empty());
            const std::uint8_t form = formOf(name);
            const bool isNamed = !name.chain.empty();
            named.targets.push_back(isNamed ? namer.target(name, form % residueForms) : noTarget);
            named.targets.push_back(isNamed && form >= residueForms ? namer.target(name, form)
                                                                    : noTarget);
        }
    }
    m_named.push_back(std::move(named));
}

void References::readAtoms(const cif::Category& atoms, const std::vector<bool>& isKept) {
    const PartColumns columns = atomColumns(atoms);
    AtomWalk byAuthor(*this, false);
    AtomWalk byLabel(*this, true);
    cif::Rows rows(m_text, atoms);
    for (std::size_t row = 0; rows.next(); ++row) {
        const PartValues values = valuesOf(rows, columns);
        byAuthor.see(values, isKept[row]);
        byLabel.see(values, isKept[row]);
    }
}

void References::markNamed(std::vector<RowFate>& fates) const {
    for (const Named& named : m_named) {
        const cif::Category& category = m_categories[named.category];
        const Loss loss = namingOf(category)->loss;
        RowFate& fate = fates[named.category];
        for (std::size_t row = 0; row != category.rowCount; ++row) {
            const std::span<const std::uint32_t> targets(
                named.targets.data() + row * named.targetsOfARow, named.targetsOfARow);
            const bool isGone = std::ranges::any_of(targets, [this](std::uint32_t target) {
                return target != noTarget && m_targets[target].wasThere &&
                       !m_targets[target].isThere;
            });
            if (isGone && loss != Loss::Observation)
                fate.drop(row, category.rowCount);
            const bool isCut = isGone && loss == Loss::Range &&
                               std::ranges::any_of(targets, [this](std::uint32_t target) {
                                   return target != noTarget && m_targets[target].isThere;
                               });
            fate.cutRanges += isCut ? 1 : 0;
            for (const std::string_view name : observationColumns)
                if (const std::size_t column = category.column(name);
                    isGone && loss == Loss::Observation && column < category.columns.size())
                    fate.updates.push_back({row, {column, "?"}});
        }
    }
}

std::vector<RowFate> References::fates() const {
    std::vector<RowFate> fates(m_categories.size());
    markNamed(fates);
    LinkedRows linked(m_text, m_categories, fates);
    for (const RowLink& link : rowLinks())
        linked.dropLinked(link);
    for (const RowCount& count : rowCounts())
        linked.countAgain(count);
    return fates;
}

} // namespace memory_host::mmcif
