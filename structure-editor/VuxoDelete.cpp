// Destroying items. The tree is emptied before the first item goes: no row is painted or walked
// while it stands for an item that is gone.
#include "Vuxo.h"

#include "DataMaker.h"
#include "ItemRef.h"
#include "Space.h"
#include "TreeItem.h"
#include "TreeView.h"

#include <QMessageBox>

bool Vuxo::confirmDelete(const std::string& name) {
    // On the heap, and looked at through a pointer that knows: the host may end the window, and the
    // question with it, while it is open.
    const QPointer<QMessageBox> question =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Warning"),
                        QStringLiteral("Delete %1?").arg(QString::fromLatin1(name)),
                        QMessageBox::Ok | QMessageBox::Cancel, this);
    question->setTextFormat(Qt::PlainText);
    question->setDefaultButton(QMessageBox::Ok);
    question->setEscapeButton(QMessageBox::Cancel);
    const int answer = question->exec();
    if (!question)
        return false;
    delete question;
    return answer == QMessageBox::Ok;
}

void Vuxo::KillBranch(TreeItem* Victim) {
    TAVIK::Compound* victim = Victim ? Victim->compound() : nullptr;
    TAVIK::Compound* shown = rootItem();
    if (!victim || !shown)
        return;
    attempt([this, victim, shown] {
        const ItemRef root(shown);
        const ItemRef branch(victim);
        if (!confirmDelete(victim->GetName()))
            return;
        // Neither the row nor the items are known to exist any more.
        TAVIK::Compound* top = root.among(TAVIK::Space::instance());
        change<DataDelete>(top ? branch.below(top) : nullptr, [this](TAVIK::Compound* item) {
            m_Tree->clear();
            TAVIK::DataMaker::Destroy(item);
            MakeList();
            Populate(m_Current);
        });
    });
}
