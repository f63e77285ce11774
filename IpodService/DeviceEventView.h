// Reads an event record within its bounds.
#pragma once

#include <cstddef>
#include <string_view>

#include "DeviceManager/DeviceManager.h"

/// An event record as its reader sees it: words by number, texts by their offset in the text area. Whatever
/// the record holds, nothing outside it is read; a text that lies outside is empty. Refers to the record. Any
/// thread.
class DeviceEventView {
  public:
    explicit DeviceEventView(const DeviceEvent& event) : m_event(event) {}

    u32 Id() const { return m_event.words[0]; }
    /// `number` 0 to 5.
    u32 Word(std::size_t number) const { return m_event.words[number]; }
    /// For "%d".
    int Signed(std::size_t number) const { return static_cast<int>(m_event.words[number]); }

    std::string_view TextAt(u32 offset) const;
    /// The text that follows the one at `offset`.
    std::string_view TextAfter(u32 offset) const;
    /// 0 for the first of the packed texts.
    std::string_view Text(unsigned number) const;
    /// A byte of the text area, 0 outside.
    unsigned char Byte(std::size_t offset) const;
    /// A 16-bit value of the text area, the high byte first.
    int BigEndian16(std::size_t offset) const;

  private:
    u32 OffsetAfter(u32 offset) const;

    const DeviceEvent& m_event;
};
