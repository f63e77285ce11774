// The members of a control command, read by type.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceSimulator/wire/FunctionId.h"

namespace DeviceSimulator {

/// The readers note the first thing that is wrong and then give a default; so all are read before Error() is
/// asked. A member that is absent is wrong only where no default is given.
class ControlFields {
  public:
    explicit ControlFields(const Json::Value& command) : m_command(command) {}

    /// Empty while nothing is wrong.
    const std::string& Error() const { return m_error; }
    bool AreGood() const { return m_error.empty(); }
    void Complain(std::string_view member, std::string_view what);
    /// As Complain, of the command as a whole.
    void Refuse(std::string_view why);

    void AllowOnly(std::span<const std::string_view> members);
    bool Has(std::string_view member) const { return Find(member) != nullptr; }
    std::uint32_t Number(std::string_view member, std::optional<std::uint32_t> otherwise = {});
    std::optional<std::uint32_t> OptionalNumber(std::string_view member);
    /// From -`most` to `most`.
    std::optional<std::int32_t> OptionalSigned(std::string_view member, std::int32_t most);
    std::string Text(std::string_view member, std::optional<std::string> otherwise = {});
    bool Flag(std::string_view member, bool otherwise);
    /// Which of `words` it is; none when absent.
    std::optional<std::size_t> Word(std::string_view member, std::span<const std::string_view> words);
    /// None when absent.
    std::vector<std::uint32_t> Numbers(std::string_view member);
    std::vector<std::string> Texts(std::string_view member);
    std::vector<Json::Value> Objects(std::string_view member);
    /// Of texts and numbers.
    std::vector<Json::Value> Items(std::string_view member);
    /// A device-manager function by its name.
    FunctionId Function(std::string_view member);
    /// The same, or every function for "*".
    std::vector<FunctionId> Functions(std::string_view member);
    /// A device type by word or number; `otherwise` when absent.
    std::uint32_t Type(std::string_view member, std::uint32_t otherwise);

  private:
    const Json::Value* Find(std::string_view member) const;
    /// The elements of an array that all are as `isGood` wants them; none when absent.
    std::vector<Json::Value> Elements(std::string_view member, bool (*isGood)(const Json::Value&),
                                      std::string_view what);

    const Json::Value& m_command;
    std::string m_error;
};

}  // namespace DeviceSimulator
