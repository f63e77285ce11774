// The model with a service of a few lines behind it: what is asked, and what is known then.
#include "IpodControl/view/ViewModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <functional>
#include <map>
#include <tuple>

#include "IpodControl/view/Canvas.h"
#include "IpodControl/view/View.h"
#include "ServiceUtil/JsonText.h"

namespace IpodControl::PlayerView {
namespace {

/// Two categories, albums with songs and songs alone, and one position in it for all clients.
struct SharedLibrary {
    Json::Value Answer(const std::string& method, const Json::Value& params) {
        const auto id = params["itemId"].asInt64();
        filter = method == "getBrowseList" ? filter : params["searchText"].asString();
        if (method == "getBrowseList") {
            return List(params["startIndex"].asInt(), params["itemCount"].asInt());
        }
        if (method == "selectBrowseItem" && !IsSongs()) {
            way.push_back(id);
            return "browsing";
        }
        if (method == "selectBrowseItem") {
            played.push_back(way.back() * 1000 + id);
            way.clear();
        } else if (method == "selectBrowseBack") {
            way.pop_back();
        } else if (method == "resetBrowseList") {
            way.clear();
            return Params("resetSuccess", true);
        }
        return "success";
    }
    bool IsSongs() const { return way.size() == 2 || (way.size() == 1 && way[0] == kSongs); }
    Json::Value List(int start, int count) const {
        Json::Value list;
        list["isRootCategory"] = way.empty();
        list["isLastCategory"] = IsSongs();
        list["totalCount"] = way.empty() ? 2 : total;
        for (int i = start; i < std::min(start + count, list["totalCount"].asInt()); ++i) {
            Json::Value& item = list["categoryItems"].append(Json::objectValue);
            item["itemId"] = Json::Int64{way.empty() ? (i == 0 ? kAlbums : kSongs) : i};
            item["itemName"] = (way.empty() ? "Category " : IsSongs() ? song : "Album ") + std::to_string(i);
        }
        return list;
    }

    static constexpr std::int64_t kAlbums = 8;
    static constexpr std::int64_t kSongs = 32;
    int total = 5;  ///< items in a list below the root
    std::string song = "Song ";
    std::vector<std::int64_t> way;
    std::string filter;
    std::vector<std::int64_t> played;  ///< list * 1000 + song
};

/// What a canvas shows, without blanks at its end.
std::string Shown(const Canvas& canvas) {
    std::string text;
    for (int row = 0; row < canvas.Extent().rows; ++row) {
        for (int column = 0; column < canvas.Extent().columns; ++column) {
            text += canvas.At(row, column).text;
        }
    }
    return text.erase(text.find_last_not_of(' ') + 1);
}

class ViewModelTest : public testing::Test {
  protected:
    ViewModelTest() {
        Pass(0);
        model.SetListRows(10);
        model.Connected();
        Run();
    }
    void Say(const std::string& members) {
        model.Take(Message::Parse("{\"jsonrpc\":\"2.0\"," + members + "}").value());
    }
    std::string Answer(const Json::Value& request) {
        const std::string method = request["method"].asString();
        ++asked[method];
        const bool isBrowsing = method.find("rowse") != std::string::npos;
        const std::string own = answers.count(method) != 0 ? answers[method] : R"("result":{})";
        return "\"id\":" + request["id"].asString() + "," +
               (isBrowsing ? "\"result\":" + WriteJson(library.Answer(method, request["params"])) : own);
    }
    /// Answers until nothing more is asked.
    void Run() {
        for (auto lines = model.TakeLines(); !lines.empty(); lines = model.TakeLines()) {
            mostAtOnce = std::max(mostAtOnce, lines.size());
            for (const std::string& line : lines) {
                const Json::Value request = ReadJson(line).value();
                if (meanwhile && (request.isArray() || request["method"] == "selectBrowseItem")) {
                    meanwhile();
                }
                if (!request.isArray()) {
                    Say(Answer(request));
                    continue;
                }
                std::string batch;
                for (const Json::Value& each : request) {
                    batch += (batch.empty() ? "[{" : ",{") + Answer(each) + "}";
                }
                model.Take(Message::Parse(batch + "]").value());
            }
        }
    }
    void Press(char32_t key) {
        model.Press(key);
        Run();
    }
    void Type(const std::u32string& text) {
        std::for_each(text.begin(), text.end(), [this](char32_t c) { Press(c); });
    }
    void Pass(int milliseconds) { model.SetTime(now += std::chrono::milliseconds(milliseconds)); }

    Time now{std::chrono::hours(1)};
    std::map<std::string, std::string> answers{{"isIpodConnected", R"("result":{"connected":true})"}};
    std::map<std::string, int> asked;
    SharedLibrary library;
    std::function<void()> meanwhile;  ///< comes in just before a choice
    std::size_t mostAtOnce = 0;
    ViewModel model;
};

TEST_F(ViewModelTest, FetchesWhatIsShownOfALongListAndNoticesAnotherClient) {
    library.way = {SharedLibrary::kSongs};
    library.total = 100'000;
    Press(kRedraw);
    for (int i = 0; i < 2000; ++i) {
        model.Press(kPageDown);
    }
    mostAtOnce = 0;
    Press(kEnd);
    EXPECT_EQ(model.List().At(99'999)->name, "Song 99999");
    EXPECT_LE(mostAtOnce, 2U);
    library.song = "Other ";
    Press(kEnter);
    EXPECT_EQ(asked["selectBrowseItem"], 0) << "it would have played another song";
    EXPECT_NE(model.Status().find("Another client"), std::string::npos);
    for (int i = 0; i < 50; ++i, library.total += 1000) {
        Pass(40);
        Press(kEnd);
    }
    EXPECT_LE(asked["getBrowseList"], 14) << "not more than one new start a second";
}

TEST_F(ViewModelTest, SendsOneFilterAtATimeAndThenTheLastOne) {
    Press(kEnter);
    for (const char32_t c : std::u32string(U"/äbc")) {
        model.Press(c);
    }
    Run();
    EXPECT_EQ(asked["filterBrowseList"], 2);
    EXPECT_EQ(model.List().FilterText(), "äbc");
}

TEST_F(ViewModelTest, KeepsItsPlaceThroughFiltersJumpsAndPlaying) {
    Type(U"/cATEGORY 1");
    EXPECT_EQ(model.List().Cursor(), 1) << "the first category that begins so";
    Press(kEnter);
    answers["getNextAlphaNumericIndex"] = R"("result":{"itemIndex":3})";
    Press(kEnter);
    Type(U"]");
    EXPECT_EQ(model.List().At(model.List().Cursor())->name, "Song 3");
    Type(U"/x");
    Press(kEnter);
    Type(U"]");
    EXPECT_NE(model.Status().find("take the filter off"), std::string::npos);
    Press(kDown);
    Press(kEnter);
    EXPECT_EQ(library.played, std::vector<std::int64_t>{SharedLibrary::kSongs * 1000 + 1});
    EXPECT_EQ(model.List().Cursor(), 1);
    EXPECT_EQ(model.List().Path() + "/" + model.List().FilterText(), "Category 1/x");
    EXPECT_EQ(library.filter, "x") << "walked back";
    Press(kLeft);
    EXPECT_EQ(model.List().Path() + std::to_string(model.List().Cursor()), "Library1");
}

// The position is shared: an item's number means another item wherever another client has gone.
TEST_F(ViewModelTest, PlaysNothingUnaskedWhereAnotherClientMovesThePosition) {
    Press(kEnter);
    meanwhile = [this] { library.way = {SharedLibrary::kSongs}; };
    Press(kDown);
    Press(kEnter);
    EXPECT_EQ(library.played, std::vector<std::int64_t>());
    EXPECT_EQ(model.List().Path(), "Category 0 > Album 1");
    Press(kDown);
    Press(kDown);
    Press(kEnter);
    EXPECT_EQ(library.played, std::vector<std::int64_t>{1002}) << "the song that was chosen";
    EXPECT_EQ(library.way, (std::vector<std::int64_t>{SharedLibrary::kAlbums, 1})) << "and still in its list";
    EXPECT_EQ(model.List().Cursor(), 2);
}

TEST_F(ViewModelTest, KnowsNoWayToAListThatAnotherClientHasOpenedMeanwhile) {
    Press(kEnter);
    Press(kEnter);
    library.way = {SharedLibrary::kAlbums, 3};
    library.song = "Other song ";
    Press(kRedraw);
    Press(kEnter);
    EXPECT_EQ(library.played, std::vector<std::int64_t>{3000}) << "the one that is shown";
}

TEST_F(ViewModelTest, SaysThatASongPlaysWhereNoWayWasKnown) {
    model.Disconnected("gone");
    library.way = {SharedLibrary::kAlbums};
    model.Connected();
    Run();
    meanwhile = [this] { library.way = {SharedLibrary::kSongs}; };
    Press(kEnter);
    EXPECT_NE(model.Status().find("a song of it plays now"), std::string::npos) << model.Status();
    EXPECT_EQ(model.List().Path(), "Library");
}

TEST_F(ViewModelTest, TakesItsFilterBackWhenItLeaves) {
    Press(kEnter);
    Type(U"/x");
    EXPECT_EQ(library.filter, "x");
    model.Leave();
    Run();
    EXPECT_EQ(library.way, std::vector<std::int64_t>{SharedLibrary::kAlbums});
    EXPECT_EQ(library.filter, "") << "the way there is gone without it";
}

// No notification tells that the player has stopped.
TEST_F(ViewModelTest, NoticesThatNothingPlaysAnyMore) {
    Say(R"("method":"trackInfoNotification","params":{"trackInfo":{"isPlaying":true,"trackTitle":"a"}})");
    Run();
    const int before = asked["getCurrentTrackInfo"];
    Pass(3000);
    Say(R"("method":"trackTimeNotification","params":{"trackTime":3000})");
    Pass(3000);
    Run();
    EXPECT_EQ(asked["getCurrentTrackInfo"], before);
    Pass(2000);
    Run();
    EXPECT_EQ(asked["getCurrentTrackInfo"], before + 1);
    answers["isTrackPaused"] = R"("result":{"isPaused":false})";
    Say(R"("method":"trackInfoNotification","params":{"trackInfo":{"isPlaying":false}})");
    Run();
    EXPECT_EQ(model.Player().Known().state, PlayState::Stopped);
}

TEST_F(ViewModelTest, ShowsHowToQuitInASmallWindow) {
    for (const bool hasHelp : {false, true}) {
        if (hasHelp) {
            Type(U"?");
        }
        Canvas canvas({12, 40});
        Draw(canvas, model, {0, "somewhere"});
        EXPECT_NE(Shown(canvas).find(" quit"), std::string::npos) << Shown(canvas);
    }
}

TEST_F(ViewModelTest, SaysWhyAKeyDoesNothing) {
    const std::vector<std::array<const char*, 4>> cases{
        {"n", "next", R"("error":{"message":"Oh."})", "The service could not change the track: Oh."},
        {"s", "enableShuffle", R"("result":{"enabled":false})", "The player keeps shuffle off"},
        {"a", "start", R"("result":"failure")", "The sound was on already"},
    };
    for (const auto& [key, method, answer, status] : cases) {
        answers[method] = answer;
        Press(static_cast<char32_t>(*key));
        EXPECT_EQ(model.Status(), status);
    }
}

TEST_F(ViewModelTest, MovesOnBetweenNotifications) {
    Say(R"("method":"trackInfoNotification","params":{"trackInfo":{"isPlaying":true,"trackTime":1000}})");
    Pass(1500);
    Say(R"("method":"trackTimeNotification","params":{"trackTime":2000})");
    EXPECT_EQ(model.Player().Position(), 2500) << "it waits for a clock that lags";
    Say(R"("method":"trackTimeNotification","params":{"trackTime":500})");
    Say(R"("method":"trackPausedNotification","params":{"isTrackPaused":true})");
    Pass(5000);
    EXPECT_EQ(model.Player().Position(), 500) << "the track had begun anew";
}

TEST_F(ViewModelTest, MakesNamesHarmlessAndCutsThem) {
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
        EXPECT_EQ(Shown(canvas), shown);
    }
}

}  // namespace
}  // namespace IpodControl::PlayerView
