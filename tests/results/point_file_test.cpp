// The file of a point's outcome: all of it comes back, and no damaged one passes.
#include "results/point_file.h"

#include <gtest/gtest.h>

namespace photrak {
namespace {

using namespace std::literals;

PointFile FullFile() {
    PointFile file;
    file.hash = "0123456789abcdef";
    file.point = 12345678;
    file.seconds = 0.1;
    file.drewNoise = true;
    file.outcome = {Status::Warning, Status::Success, "failed\n"};
    file.log = "log 1\n\0%s\nend 0\n\n"s;
    file.warnings = {{"Line:Fiber", "two\nlines", {{"told", "p", "1", "2", "m", true}}},
                     {"", "", {}}};
    file.files = {{"a b.sig", "1 2\n", false}, {"t.bdt", "", true}};
    BerReading reading;
    reading.component = "Tester";
    reading.BER = 1.0 / 3.0;
    reading.Q = -0.0;
    reading.level = 5e-324;
    reading.loop = 3;
    reading.found = false;
    reading.after = 1;
    file.readings = {reading};
    return file;
}

TEST(PointFiles, ComeBackWhole) {
    const PointFile file = FullFile();
    const std::string text = PointFileText(file);
    PointFile read;
    std::string reason;
    ASSERT_TRUE(ReadPointFile(text, read, reason)) << reason;
    EXPECT_EQ(PointFileText(read), text);
    EXPECT_EQ(read.log, file.log);
    EXPECT_EQ(read.readings.at(0).BER, 1.0 / 3.0);
    EXPECT_EQ(read.readings.at(0).after, 1u);
    EXPECT_EQ(read.warnings.at(0).clamps.at(0).unit, "m");
    EXPECT_EQ(PointFileName(12), "0000012.point");
    EXPECT_EQ(PointFileName(123456789), "123456789.point");
}

TEST(PointFiles, AreRefusedWhenCutOrDamaged) {
    const std::string text = PointFileText(FullFile());
    PointFile read;
    for (std::size_t length = 0; length < text.size(); ++length) {
        std::string reason;
        EXPECT_FALSE(ReadPointFile(text.substr(0, length), read, reason)) << length;
        EXPECT_FALSE(reason.empty());
    }
    for (const std::string_view head :
         {"form 15\nphotrak-point 2\n", "form 99999999999999999999\n", "form -1\nx\n", "form 15\n",
          "form 15\nphotrak-point 1\nfile 3\na\n", "form 15\nphotrak-point 1\nfile 1\na\nend 0\n\n",
          "form 15\nphotrak-point 1\nclamp 0\n\nend 0\n\n"}) {
        std::string reason;
        EXPECT_FALSE(ReadPointFile(head, read, reason)) << head;
    }
}

}  // namespace
}  // namespace photrak
