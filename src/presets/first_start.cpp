#include "presets/first_start.h"

#include "files/file_manager.h"
#include "files/file_system.h"

namespace norava {

namespace {

bool WritePrograms(const std::string& folder, const std::string& extension,
                   std::span<const FactoryProgram> bank, const std::atomic<bool>* cancelled) {
    for (const FactoryProgram& program : bank) {
        if (cancelled != nullptr && *cancelled) return false;
        const std::string category = folder + '/' + program.category;
        const std::string path = category + '/' + program.name + '.' + extension;
        if (!file_system::MakeFolder(category.c_str()) ||
            !file_system::ReplaceFile(path.c_str(), program.block.data(), program.block.size()))
            return false;
    }
    return true;
}

}  // namespace

bool WriteFactoryBank(const std::string& root, const std::string& extension,
                      std::span<const FactoryProgram> bank, const std::atomic<bool>* cancelled) {
    if (bank.empty() || file_system::KindOf(root.c_str()) != file_system::EntryKind::none)
        return false;
    const std::string parent = root.substr(0, root.rfind('/'));
    if (!CFileManager().CreateDirectory(parent.c_str())) return false;
    file_system::RemoveLeftovers(parent.c_str());
    return file_system::PublishFolder(root.c_str(), [&](const char* unfinished) {
        return WritePrograms(unfinished, extension, bank, cancelled);
    });
}

}  // namespace norava
