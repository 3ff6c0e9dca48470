#pragma once

#include <algorithm>
#include <vector>

namespace norava {

// Who is modal: the one who asked last. When it ends, the one before is modal again; one that ends
// while others are above it just leaves the middle.
template <typename T>
class ModalStack {
  public:
    void Push(T* member) { members.push_back(member); }
    // Takes back the member's latest turn.
    bool Remove(const T* member) {
        const auto latest = std::find(members.rbegin(), members.rend(), member);
        if (latest == members.rend()) return false;
        members.erase(std::next(latest).base());
        return true;
    }
    void RemoveAll(const T* member) { std::erase(members, member); }
    [[nodiscard]] T* Top() const { return members.empty() ? nullptr : members.back(); }
    [[nodiscard]] bool Holds(const T* member) const {
        return std::find(members.begin(), members.end(), member) != members.end();
    }
    // Lowest first.
    [[nodiscard]] const std::vector<T*>& GetMembers() const { return members; }

  private:
    std::vector<T*> members;
};

}  // namespace norava
