// By which letter an item of a sorted list is found.
#pragma once

#include <optional>
#include <string_view>

/// The byte that a name is filed under: its first one, or the one behind a leading "The ". None for an empty
/// name.
std::optional<unsigned char> InitialKey(std::string_view name);

/// The names that count as filed under the same letter as one name.
class InitialGroup {
  public:
    /// `key` is the one name's own key.
    explicit InitialGroup(unsigned char key);
    /// Other keys are taken as they are: only the group's own was folded to upper case.
    bool Contains(unsigned char key) const { return key == m_key || key == m_key + kCaseDistance; }

  private:
    /// From an upper-case letter to its lower-case form. It is added to any key, so the digit '1' has 'Q' in
    /// its group; clients rely on that.
    static constexpr int kCaseDistance = 'a' - 'A';

    int m_key;
};
