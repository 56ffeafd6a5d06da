// Readings are a list, searched by name: a topology holds few testers.
#include "kernel/run_record.h"

#include <algorithm>

namespace photrak {

void RunRecord::TakeReading(const BerReading& reading) {
    ofPoint.push_back(reading);
    ofPoint.back().after = written.Names().size();
    const auto place = std::ranges::find(readings, reading.component, &BerReading::component);
    if (place == readings.end()) {
        readings.push_back(reading);
    } else {
        *place = reading;
    }
}

RunRecord& CurrentRun() {
    static RunRecord record;
    return record;
}

void ResetRunRecord() {
    CurrentRun() = {};
}

}  // namespace photrak
