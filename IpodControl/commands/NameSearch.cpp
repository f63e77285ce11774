#include "IpodControl/commands/NameSearch.h"

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <string_view>

#include "IpodControl/DisplayText.h"
#include "IpodControl/Message.h"
#include "ServiceUtil/Utf8.h"

namespace IpodControl {

namespace {

std::u32string Characters(std::string_view text) {
    std::u32string characters;
    while (!text.empty()) {
        characters += TakeCharacter(text);
    }
    return characters;
}

/// How many letters have to be changed, left out or added to get from one to the other.
std::size_t EditDistance(std::string_view left, std::string_view right) {
    const std::u32string from = Characters(left);
    const std::u32string to = Characters(right);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char32_t letter : from) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (letter == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// Small when one name contains the other, so that a part of a name leads to the whole.
std::size_t Distance(const std::string& left, const std::string& right) {
    if (left.find(right) != std::string::npos || right.find(left) != std::string::npos) {
        return 1;
    }
    // More letters than any list has in a column tell nothing more.
    constexpr std::size_t kMostLetters = 64;
    return 1 + EditDistance(Shortened(left, kMostLetters), Shortened(right, kMostLetters));
}

/// What stands behind the last "#"; 0 when that is no number from 1 on.
std::int64_t NumberBehind(std::string_view name) {
    const std::size_t sign = name.rfind('#');
    std::int64_t number = 0;
    if (sign != std::string_view::npos) {
        const char* const end = name.data() + name.size();
        const auto [stop, error] = std::from_chars(name.data() + sign + 1, end, number);
        number = error == std::errc() && stop == end ? std::max<std::int64_t>(number, 0) : 0;
    }
    return number;
}

}  // namespace

std::string Folded(std::string_view text) {
    std::string folded;
    while (!text.empty()) {
        AppendUtf8(folded, g_unichar_tolower(TakeCharacter(text)));
    }
    return folded;
}

NameSearch::NameSearch(const std::string& name) {
    m_wanted.push_back({name, Folded(name)});
    if (const std::int64_t number = NumberBehind(name); number > 0) {
        const std::string bare = name.substr(0, name.rfind('#'));
        m_wanted.push_back({bare, Folded(bare), number});
    }
}

void NameSearch::Look(const Json::Value& item) {
    const std::string name = TextMember(item, "itemName");
    const std::string folded = Folded(name);
    for (Wanted& wanted : m_wanted) {
        if (name == wanted.name && ++wanted.exact.count == wanted.number) {
            wanted.exact.item = item;
        }
        if (folded == wanted.folded && ++wanted.caseless.count == wanted.number) {
            wanted.caseless.item = item;
        }
    }
    LookNear(name, folded);
}

const Json::Value& NameSearch::Found() const {
    for (const Wanted& wanted : m_wanted) {
        // Where the name itself is there, the number counts those of exactly that name.
        const Match& match = wanted.exact.count > 0 ? wanted.exact : wanted.caseless;
        if (match.item.isObject()) {
            return match.item;
        }
    }
    return Json::Value::nullSingleton();
}

void NameSearch::LookNear(const std::string& name, const std::string& folded) {
    constexpr std::size_t kMost = 3;
    const std::string& wanted = m_wanted.front().folded;
    if (Found().isObject() || folded.empty() || wanted.empty()) {
        return;
    }
    const std::size_t distance = Distance(folded, wanted);
    const bool isKnown = std::any_of(m_nearest.begin(), m_nearest.end(),
                                     [&name](const auto& candidate) { return candidate.second == name; });
    if (!isKnown && distance <= 1 + wanted.size() / 2) {
        m_nearest.emplace(distance, name);
        if (m_nearest.size() > kMost) {
            m_nearest.erase(std::prev(m_nearest.end()));
        }
    }
}

std::vector<std::string> NameSearch::Nearest() const {
    // Beside one that is nearly it, what is much farther off only distracts.
    constexpr std::size_t kSpread = 2;
    std::vector<std::string> names;
    for (const auto& [distance, name] : m_nearest) {
        if (distance <= m_nearest.begin()->first + kSpread) {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace IpodControl
