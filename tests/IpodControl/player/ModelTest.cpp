// The model with a service of a few lines behind it: what is asked, and what is known then.
#include "IpodControl/player/Model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <map>
#include <sstream>
#include <tuple>

#include "IpodControl/player/Canvas.h"

namespace IpodControl::PlayerView {
namespace {

class ModelTest : public testing::Test {
  protected:
    ModelTest() {
        Pass(0);
        model.SetListRows(10);
        model.Connected();
        Run();
    }
    /// What every request gets that has no answer of its own: a page of a list of `total` songs.
    std::string List(const Json::Value& params) const {
        Json::Value list;
        list["isRootCategory"] = isRoot;
        list["totalCount"] = total;
        Json::Value& items = list["categoryItems"] = Json::arrayValue;
        for (int i = params["startIndex"].asInt(), n = params["itemCount"].asInt(); n > 0; ++i, --n) {
            Json::Value& item = items.append(Json::objectValue);
            item["itemId"] = i;
            item["itemName"] = prefix + std::to_string(i);
        }
        return "\"result\":" + ToLine(list);
    }
    void Say(const std::string& members) {
        model.Take(Message::Parse("{\"jsonrpc\":\"2.0\"," + members + "}").value());
    }
    /// Answers until nothing more is asked.
    void Run() {
        for (auto lines = model.TakeLines(); !lines.empty(); lines = model.TakeLines()) {
            mostAtOnce = std::max(mostAtOnce, lines.size());
            for (const std::string& line : lines) {
                Json::Value request;
                std::istringstream(line) >> request;
                const std::string method = request["method"].asString();
                ++asked[method];
                isRoot = isRoot && method != "selectBrowseItem";
                const std::string& own = answers[method];
                Say("\"id\":" + request["id"].asString() + "," +
                    (own.empty() ? List(request["params"]) : own));
            }
        }
    }
    void Press(KeyKind kind, char32_t character = 0) {
        model.Press({kind, character});
        Run();
    }
    void Type(const std::u32string& text) {
        for (const char32_t c : text) {
            Press(KeyKind::Character, c);
        }
    }
    void Pass(int milliseconds) { model.SetTime(now += std::chrono::milliseconds(milliseconds)); }

    Time now{std::chrono::hours(1)};
    int total = 100'000;
    bool isRoot = false;
    std::string prefix = "Song ";
    std::map<std::string, std::string> answers{{"isIpodConnected", R"("result":{"connected":true})"},
                                               {"filterBrowseList", R"("result":"success")"}};
    std::map<std::string, int> asked;
    std::size_t mostAtOnce = 0;
    Model model;
};

TEST_F(ModelTest, FetchesWhatIsShownOfALongListAndNoticesAnotherClient) {
    for (int i = 0; i < 2000; ++i) {
        model.Press({KeyKind::PageDown});
    }
    mostAtOnce = 0;
    Press(KeyKind::End);
    EXPECT_EQ(model.List().At(99'999)->name, "Song 99999");
    EXPECT_LE(mostAtOnce, 2U);
    prefix = "Other ";
    Press(KeyKind::Enter);
    EXPECT_EQ(asked["selectBrowseItem"], 0) << "it would have played another song";
    EXPECT_NE(model.Status().find("Another client"), std::string::npos);
    for (int i = 0; i < 50; ++i, total += 1000) {
        Pass(40);
        Press(KeyKind::End);
    }
    EXPECT_LE(asked["getBrowseList"], 14) << "not more than one new start a second";
}

TEST_F(ModelTest, SendsOneFilterAtATimeAndThenTheLastOne) {
    for (const char32_t c : std::u32string(U"/äbc")) {
        model.Press({KeyKind::Character, c});
    }
    Run();
    EXPECT_EQ(asked["filterBrowseList"], 2);
    EXPECT_EQ(model.List().FilterText(), "äbc");
}

TEST_F(ModelTest, KeepsItsPlaceThroughFiltersJumpsAndPlaying) {
    isRoot = true;
    Press(KeyKind::Redraw);
    Type(U"/sONG 3");
    EXPECT_EQ(model.List().Cursor(), 3) << "the first category that begins so";
    Press(KeyKind::Enter);
    answers["selectBrowseItem"] = R"("result":"browsing")";
    answers["getNextAlphaNumericIndex"] = R"("result":{"itemIndex":5000})";
    Press(KeyKind::Enter);
    Type(U"]");
    EXPECT_EQ(model.List().At(model.List().Cursor())->name, "Song 5000");
    total = 7;
    Type(U"/x");
    Press(KeyKind::Enter);
    Type(U"]");
    EXPECT_NE(model.Status().find("take the filter off"), std::string::npos);
    Press(KeyKind::Down);
    answers["selectBrowseItem"] = answers["selectBrowseBack"] = R"("result":"success")";
    isRoot = false;
    Press(KeyKind::Enter);
    EXPECT_EQ(model.List().Cursor(), 1);
    EXPECT_EQ(model.List().Path() + "/" + model.List().FilterText(), "Song 3/x");
    EXPECT_EQ(std::pair(asked["selectBrowseItem"], asked["filterBrowseList"]), std::pair(3, 2))
        << "walked back";
    isRoot = true;
    Press(KeyKind::Left);
    EXPECT_EQ(model.List().Path() + std::to_string(model.List().Cursor()), "Library3");
}

TEST_F(ModelTest, SaysWhyAKeyDoesNothing) {
    const std::vector<std::array<const char*, 4>> cases{
        {"n", "next", R"("error":{"message":"Oh."})", "The service could not change the track: Oh."},
        {"s", "enableShuffle", R"("result":{"enabled":false})", "The player keeps shuffle off"},
        {"a", "start", R"("result":"failure")", "The sound was on already"},
    };
    for (const auto& [key, method, answer, status] : cases) {
        answers[method] = answer;
        Press(KeyKind::Character, static_cast<char32_t>(*key));
        EXPECT_EQ(model.Status(), status);
    }
}

TEST_F(ModelTest, MovesOnBetweenNotifications) {
    Say(R"("method":"trackInfoNotification","params":{"trackInfo":{"isPlaying":true,"trackTime":1000}})");
    Pass(1500);
    Say(R"("method":"trackTimeNotification","params":{"trackTime":2000})");
    EXPECT_EQ(model.Playing().Position(), 2500) << "it waits for a clock that lags";
    Say(R"("method":"trackTimeNotification","params":{"trackTime":500})");
    Say(R"("method":"trackPausedNotification","params":{"isTrackPaused":true})");
    Pass(5000);
    EXPECT_EQ(model.Playing().Position(), 500) << "the track had begun anew";
}

TEST_F(ModelTest, MakesNamesHarmlessAndCutsThem) {
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    const std::vector<std::tuple<Charset, const char*, const char*>> cases{
        {Charset::Utf8, "\x1b[31mred\x07\xC2\x9b a\u202Eb\u2066", "[31mred…"},
        {Charset::Utf8, "月見坂楽団", "月見坂…"},
        {Charset::Utf8, "e\u0301\u0301\u0301\u0301\u0301!", "e\u0301\u0301\u0301!"},
        {Charset::Utf8, "\xC3(\xF5\xED\xA0\x80", "\uFFFD(\uFFFD\uFFFD\uFFFD\uFFFD"},
        {Charset::Ascii, "e\u0301月\x1b[456789", "e?[4567~"},
    };
    for (const auto& [charset, text, shown] : cases) {
        Canvas canvas({1, 8}, charset);
        canvas.Write(0, 0, 8, text);
        EXPECT_EQ(canvas.Row(0), shown);
    }
}

}  // namespace
}  // namespace IpodControl::PlayerView
