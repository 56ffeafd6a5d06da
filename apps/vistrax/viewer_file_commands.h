// Actions of the viewer on files and the clipboard: open, export, print, copy. Those on a plot are
// called only when there is one.
#pragma once

class QPrinter;

namespace photrak {

class ViewerWindow;

struct FileCommands {
    static void Open(ViewerWindow& w);
    static void Reload(ViewerWindow& w);
    static void Export(ViewerWindow& w);
    static void Print(ViewerWindow& w);
    /// What Print does once the printer is chosen: one page, filled.
    static void PrintOn(ViewerWindow& w, QPrinter& printer);
    static void Close(ViewerWindow& w);
    static void Quit(ViewerWindow& w);
    static void CopyValues(ViewerWindow& w);
    static void CopyPicture(ViewerWindow& w);
};

}  // namespace photrak
