// Readings are a list, searched by name: a topology holds few testers.
#include "kernel/run_record.h"

#include <algorithm>

namespace photrak {

void RunRecord::TakeReading(std::string_view component, double BER, double Q) {
    auto place = std::ranges::find(readings, component, &BerReading::component);
    if (place == readings.end()) place = readings.insert(place, {std::string(component), 0.0, 0.0});
    place->BER = BER;
    place->Q = Q;
}

RunRecord& CurrentRun() {
    static RunRecord record;
    return record;
}

void ResetRunRecord() {
    CurrentRun() = {};
}

}  // namespace photrak
