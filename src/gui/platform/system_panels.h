#pragma once

#include <functional>
#include <string>
#include <vector>

namespace norava {

// A file that the user is asked for.
struct FileDialogRequest {
    std::string title;
    std::string folder;                   // where to start; the nearest one that exists
    std::string suggestedName;            // without extension
    std::string typeName;                 // "Norava Program"
    std::vector<std::string> extensions;  // without dots; a saved file gets the first one
    bool save = false;
};
using FileChosen = std::function<void(const std::string& path)>;

// The system's own panels, for systems on which every program uses them. Both calls return at once;
// what they lead to comes later, or never when the view is deleted first. False: nothing is shown.
class SystemPanels {
  public:
    virtual ~SystemPanels() = default;
    // Not called when the user cancels. Replacing a file has been agreed to by then.
    virtual bool AskForFile(const FileDialogRequest& request, FileChosen chosen) = 0;
    virtual bool ShowMessage(const std::string& title, const std::string& text) = 0;
};

}  // namespace norava
