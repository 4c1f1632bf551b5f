#include "CommandDeeds.h"

#include <QRegExp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace plain {

namespace {

using Indices = std::array<long long, 3>;

Indices nearestPoint(const Item& grid, const std::array<float, 3>& place) {
    Indices nearest{};
    for (const std::size_t k : {0, 1, 2}) {
        const double steps = std::round((double(place[k]) - grid.origin[k]) / grid.step[k]);
        nearest[k] = static_cast<long long>(std::clamp(steps, -1e9, 1e9));
    }
    return nearest;
}

} // namespace

QString typedIn(const Step& step) {
    return QString::fromStdString(step.text);
}

void update(Model& model, Item* root, const std::function<void()>& apply) {
    model.change(root, Change::Update, [&] {
        apply();
        model.commUpdate();
    });
}

void selectFullGroups(Model& model, Item* root) {
    update(model, root, [&] {
        for (Item* group : Host::atOrBelow(root, Kind::Group, true))
            if (Host::hasSelected(*group))
                Host::setSelected(*group, true);
    });
}

void selectRadius(Model& model, Item* root, const char* kind, const Step& step) {
    model.change(root, Change::Update, [&] {
        const QString label =
            QStringLiteral("Enter (%1) selection radius").arg(QLatin1String(kind));
        if (!model.ask("Radius: " + label + ": 4 of 0 to 10000 with 3 decimals", step))
            return;
        const double radius = std::clamp(typedIn(step).toDouble(), 0.0, 10000.0);
        const double limit = radius * radius;
        const Items centres = Host::atOrBelow(root, Kind::Atom, false);
        Items near;
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, true)) {
            if (atom->selected || !atom->hasPosition)
                continue;
            for (const Item* centre : centres) {
                const float x = atom->position[0] - centre->position[0];
                const float y = atom->position[1] - centre->position[1];
                const float z = atom->position[2] - centre->position[2];
                const float squares = x * x + y * y + z * z;
                if (limit >= double(squares)) {
                    near.push_back(atom);
                    break;
                }
            }
        }
        for (Item* atom : near)
            Host::setSelected(*atom, true);
        model.commUpdate();
    });
}

void boundGrids(Model& model) {
    const Items atoms = Host::atOrBelow(model.host.space(), Kind::Atom, false);
    if (atoms.empty())
        return;
    constexpr float most = std::numeric_limits<float>::max();
    std::array<float, 3> low{most, most, most};
    std::array<float, 3> high{-most, -most, -most};
    for (const Item* atom : atoms)
        for (const std::size_t k : {0, 1, 2})
            if (atom->hasPosition) {
                low[k] = std::min(low[k], atom->position[k]);
                high[k] = std::max(high[k], atom->position[k]);
            }
    for (Item* grid : Host::below(model.host.space(), Kind::Grid, true)) {
        Indices a = nearestPoint(*grid, low);
        Indices b = nearestPoint(*grid, high);
        bool inside = true;
        for (const std::size_t k : {0, 1, 2}) {
            inside = inside && b[k] + 2 > -2;
            a[k] = std::max(a[k] - 2, 0LL);
            b[k] = std::min(b[k] + 4, static_cast<long long>(grid->points[k]));
            inside = inside && a[k] < grid->points[k];
        }
        for (const std::size_t k : {0, 1, 2})
            if (inside) {
                grid->lower[k] = int(a[k]);
                grid->upper[k] = int(b[k]);
            }
    }
}

void invertSelection(Model& model, const Step&) {
    update(model, model.root(), [&] {
        for (Item* atom : Host::atOrBelow(model.root(), Kind::Atom, true))
            Host::setSelected(*atom, !atom->selected);
    });
}

void showSelected(Model& model, bool on) {
    Item* const root = model.root();
    update(model, root, [&] {
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, false))
            Host::setVisible(*atom, on);
    });
}

void hideUnselected(Model& model, Item* root) {
    model.change(root, Change::Update, [&] {
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, true))
            if (!atom->selected)
                Host::setVisible(*atom, false);
    });
}

void forSelectedRows(Model& model, const std::function<void(Item&)>& use) {
    for (const Row* row : model.tree.all())
        if (Host::isSelected(*row->item))
            use(*row->item);
}

std::uint32_t colorOfTemperature(float temperature) {
    const double part = std::clamp(double(temperature) / 60.0, 0.0, 1.0);
    const double at = std::round(part * 99) / 99;
    static const double stops[5][3] = {
        {0, 0, 255}, {128, 128, 255}, {255, 255, 255}, {255, 128, 128}, {255, 0, 0}};
    const int from = std::min(3, int(at * 4));
    std::uint32_t color = 0xff;
    for (int k = 0; k != 3; ++k)
        color = color << 8U |
                static_cast<std::uint32_t>(std::lround(
                    stops[from][k] + (at * 4 - from) * (stops[from + 1][k] - stops[from][k])));
    return color;
}

void forSelectedResidues(Model& model, const std::function<void(Item&)>& use) {
    Item* const root = model.root();
    update(model, root, [&] {
        for (Item* residue : Host::atOrBelow(root, Kind::Residue, false))
            use(*residue);
    });
}

void switchModels(Model& model, Host::Switch way) {
    forSelectedResidues(model, [way](Item& residue) { Host::switchModel(residue, way); });
}

void applyPattern(Model& model, const std::function<void(Item&, bool matches)>& use) {
    Item* const root = model.treeOnly ? model.root() : model.host.space();
    if (!root)
        return;
    const QString pattern = QString::fromLatin1(Host::qualifiedName(*root)) + '/' +
                            model.fields[0] + "/Groups/" + model.fields[1] + '/' + model.fields[2] +
                            '$';
    const QRegExp expression(pattern, Qt::CaseSensitive, QRegExp::RegExp);
    update(model, root, [&] {
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, true))
            use(*atom, expression.indexIn(QString::fromLatin1(Host::qualifiedName(*atom)), 0) == 0);
    });
}

void send(Model& model, const char* plugin, const char* command, const char* argument,
          const QString& value, const char* overload) {
    const QString target = QString::fromLatin1(plugin);
    if (model.plugins)
        model.said.log << QStringLiteral("%1 %2|Vuxo|%3|%4|%5")
                              .arg(QLatin1String(overload), QString(target).replace('/', '|'),
                                   QLatin1String(command), QLatin1String(argument), value);
    else
        model.said.log << QStringLiteral("Plug-in %1 is not loaded (%2 %3 from Vuxo)")
                              .arg(target, QLatin1String(command), QLatin1String(argument));
}

void makeSurface(Model& model, const char* command, const char* argument) {
    send(model, "Create/SolidVolume", command, argument, QStringLiteral("false"));
}

void makeAtLevel(Model& model, const char* label, const char* command, const char* argument,
                 const Step& step) {
    if (!model.ask(QStringLiteral("Limit: %1: 0").arg(QLatin1String(label)), step))
        return;
    bool isNumber = false;
    const double level = typedIn(step).toDouble(&isNumber);
    if (isNumber)
        send(model, "Create/SolidVolume", command, argument,
             QString::asprintf("%.17g", level)); // NOLINT: as the plug-in writes it
}

void makeCartesian(Model& model) {
    model.change(model.host.space(), Change::Add, [&] {
        Item* frame = model.host.make(model.host.space(), Kind::Composite, "Cartesian");
        const auto addAxis = [&](const char* name, std::uint32_t color, std::array<float, 3> end) {
            Item* axis = model.host.make(frame, Kind::PolyLine, name);
            axis->color = color;
            axis->corners = {{0, 0, 0}, end};
        };
        addAxis("X", 0xffff0000U, {20, 0, 0});
        addAxis("Y", 0xff00ff00U, {0, 20, 0});
        addAxis("Z", 0xff0000ffU, {0, 0, 20});
        model.commAdd();
    });
}

void makeSet(Model& model, const Step& step) {
    Item* const root = model.root();
    if (!root)
        return;
    const unsigned int id = root->id;
    const QString typed = typedIn(step);
    if (!model.ask(QStringLiteral("Set: Enter name for Set: Set"), step) || typed.isEmpty())
        return;
    // Whatever was destroyed meanwhile has emptied the tree.
    if (!model.root() || model.root()->id != id)
        return;
    model.change(root, Change::Add, [&] {
        const Items members = Host::topmostSelected(root);
        const std::string name = typed.toLatin1().toStdString();
        model.said.log << QString::fromLatin1("Defined set '" + name + "' with " +
                                              std::to_string(members.size()) + " members.");
        if (root->isComposite())
            model.host.makeSet(root, name, members);
        else
            model.said.messages << QString::fromLatin1("makeSet: \"" + root->name +
                                                       "\" holds no items, so that \"" + name +
                                                       "\" cannot be made in it");
        model.commAdd();
    });
}

} // namespace plain
