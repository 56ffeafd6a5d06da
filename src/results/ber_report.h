// What the command line says about bit error rates at the end of a run: the last result of every
// tester, in the order in which they first ran. One record for the process.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace photrak {

struct BerReading {
    std::string component;
    double BER = 0.0, Q = 0.0;
};

/// Takes the place of the component's earlier reading.
void ReportBer(std::string_view component, double BER, double Q);
const std::vector<BerReading>& BerReport();
void ResetBerReport();

}  // namespace photrak
