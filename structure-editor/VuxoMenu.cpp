// The menu bar.
#include "Vuxo.h"

#include "Checks.h"

#include <QMenu>
#include <QMenuBar>

void Vuxo::CreateMenubar() {
    QMenuBar* bar = menuBar();
    checkPtr(bar, source, __LINE__);
    auto* file = new QMenu(tr("&File"), this);
    checkPtr(file, source, __LINE__);
    bar->addMenu(file);
    file->addAction(tr("Exit"), this, SLOT(close()));
}
