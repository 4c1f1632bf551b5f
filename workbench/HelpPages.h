// The help pages that there are, for the menu Help.
#pragma once

#include <QString>

#include <vector>

namespace workbench {

struct HelpPage {
    QString name;  ///< as HelpViewer::Show() takes it
    QString title; ///< its first heading, or else its name
};

/// The pages of a data folder: "first-ten-minutes" first, then by title.
std::vector<HelpPage> helpPages(const QString& dataFolder);

} // namespace workbench
