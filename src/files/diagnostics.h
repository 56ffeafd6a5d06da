// The codes of what a command finds wrong with a topology, a page of three lines for each: what it
// means, what comes of it, what to do.
#pragma once

#include <span>
#include <string_view>

namespace photrak {

struct Diagnostic {
    const char* code;
    std::string_view title;
    std::string_view page[3];
};

/// Ascending by code.
std::span<const Diagnostic> Diagnostics();
/// Null for an unknown code; letter case does not count.
const Diagnostic* FindDiagnostic(std::string_view code);

namespace diagnostic {
// The file as a whole and its blocks.
inline constexpr const char *fileUnreadable = "P1001", *unknownKeyword = "P1002",
                            *missingEnd = "P1003", *unknownWord = "P1004", *noNumber = "P1005",
                            *extraWords = "P1006", *missingLine = "P1007", *doubleNode = "P1008",
                            *notLoaded = "P1009";
// Blocks of the link.
inline constexpr const char *unknownModel = "P1101", *unknownSuperBlock = "P1102",
                            *nameMissing = "P1103", *portCount = "P1104", *doubleName = "P1105",
                            *noLibrary = "P1106", *missingFile = "P1107",
                            *brokenDefinition = "P1108", *sameResult = "P1109",
                            *savesOverInput = "P1110";
// Parameters.
inline constexpr const char *unknownParameter = "P1201", *unknownType = "P1202",
                            *otherType = "P1203", *unknownBodyWord = "P1204", *givenTwice = "P1205",
                            *emptyValue = "P1206", *noValue = "P1207", *unitTyped = "P1208",
                            *unknownName = "P1209", *unknownChoice = "P1210", *notWhole = "P1211",
                            *otherUnit = "P1212", *arrayShape = "P1213", *beyondLimit = "P1214";
// Variables, options of the command line, sweeps.
inline constexpr const char *variableType = "P1301", *variableTooLong = "P1302",
                            *hiddenVariable = "P1303", *doubleVariable = "P1304",
                            *unreadSymbol = "P1305", *unreadSweep = "P1306", *noSweep = "P1307",
                            *unreadVariable = "P1308";
// The wires.
inline constexpr const char *twoDrivers = "P1401", *wrongKind = "P1402", *openPort = "P1403",
                            *noOrder = "P1404", *nestedFault = "P1405";
}  // namespace diagnostic

}  // namespace photrak
