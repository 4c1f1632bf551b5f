#include "ActiveModel.h"

#include "Holder.h"

unsigned int TAVIK::GetActiveModel(const Compound* residue) {
    if (!residue)
        return 0;
    const memory_host::HostItem& record = memory_host::HostItem::of(residue);
    return record.kind == memory_host::Kind::Residue ? record.model : 0;
}
