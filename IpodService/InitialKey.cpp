#include "IpodService/InitialKey.h"

#include <algorithm>

#include "IpodService/AsciiCase.h"

namespace {

constexpr std::string_view kArticle = "the ";

/// A name that is nothing but the article does not count.
bool BeginsWithArticle(std::string_view name) {
    const auto same = [](char letter, char byte) { return letter == LowerCaseAscii(byte); };
    return name.size() > kArticle.size() && std::equal(kArticle.begin(), kArticle.end(), name.begin(), same);
}

}  // namespace

std::optional<unsigned char> InitialKey(std::string_view name) {
    if (name.empty()) {
        return std::nullopt;
    }
    return static_cast<unsigned char>(name[BeginsWithArticle(name) ? kArticle.size() : 0]);
}

InitialGroup::InitialGroup(unsigned char key) : m_key(key >= 'a' && key <= 'z' ? key - kCaseDistance : key) {}
