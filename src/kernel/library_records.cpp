// A call makes a handful of records: they are searched one by one.
#include "kernel/library_records.h"

#include <mutex>
#include <new>
#include <vector>

#include "base/text.h"
#include "kernel/signals.h"

namespace photrak {
namespace {

struct Record {
    const void* place;
    std::int32_t kind;
};

struct Records {
    std::mutex lock;  // a library may have threads of its own
    std::vector<Record> made;
};

Records& All() {
    static Records records;
    return records;
}

const Record* Find(const Records& all, const void* place) {
    for (const Record& record : all.made) {
        if (record.place == place) return &record;
    }
    return nullptr;
}

/// The port from 1 whose cell holds the record, before `end`; 0 if there is none.
int PortWith(const void* record, const Nodelist* list, const Nodelist* end) {
    int port = 1;
    for (; list && list != end; list = list->next, ++port) {
        if (list->sig == record) return port;
    }
    return 0;
}

std::string FaultOf(const Nodelist& cell, const Nodelist* inputs, const Nodelist* outputs) {
    if (const int port = PortWith(cell.sig, inputs, nullptr))
        return Concat("is the signal of input port ", port, ", which must be copied");
    if (const int port = PortWith(cell.sig, outputs, &cell))
        return Concat("is the signal of output port ", port, " once more");
    const Record* record = Find(All(), cell.sig);
    if (!record)
        return "is no signal that the support table made in this call, or one that was freed";
    const bool isOfKind = record->kind == UnknownSigType || record->kind == cell.sigType;
    return isOfKind ? "" : "is a signal of another kind than its code says";
}

}  // namespace

void BeginLibraryRecords() {
    const std::lock_guard lock(All().lock);
    All().made.clear();
}

void NoteLibraryRecord(const void* record, std::int32_t kind) {
    const std::lock_guard lock(All().lock);
    try {
        All().made.push_back({record, kind});
    } catch (const std::bad_alloc&) {
        // What is not noted is refused as an output; nothing may be thrown through a library.
    }
}

void ForgetLibraryRecord(const void* record) {
    const std::lock_guard lock(All().lock);
    std::erase_if(All().made, [&](const Record& made) { return made.place == record; });
}

bool CheckLibraryOutputs(const Nodelist* inputs, Nodelist* outputs, std::string& text) {
    const std::lock_guard lock(All().lock);
    std::vector<Nodelist*> faulty;
    int port = 1;
    for (Nodelist& cell : Items(outputs)) {
        const std::string fault = cell.sig ? FaultOf(cell, inputs, outputs) : std::string();
        if (!fault.empty()) {
            text += Concat("ERROR: output port ", port, " of the user model ", fault, "\n");
            faulty.push_back(&cell);
        }
        ++port;
    }
    for (Nodelist* cell : faulty) cell->sig = nullptr;
    return faulty.empty();
}

}  // namespace photrak
