// The tests of windows run without a display, with settings and sockets of their own.
#include <QApplication>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::string folder = (std::filesystem::temp_directory_path() / "photrak-qt-XXXXXX").string();
    if (!::mkdtemp(folder.data())) return 1;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const char* name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
        const std::string own = folder + "/" + name;
        ::mkdir(own.c_str(), 0700);
        qputenv(name, own.c_str());
    }
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("DISPLAY", ":99");
    const QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return result;
}
