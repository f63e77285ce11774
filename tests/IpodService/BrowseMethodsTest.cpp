#include <climits>

#include "tests/IpodService/BrowseFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Handler = CIpodRequestHandler;

class BrowseMethods : public BrowseFixture {
  protected:
    BrowseMethods() { manager.ResetDatabase(); }

    Json::Value Page(const std::string& start, const std::string& count) {
        return Answer(&Handler::GetBrowseList, "{\"startIndex\":" + start + ",\"itemCount\":" + count + "}");
    }
    Json::Value Select(const std::string& id) {
        return Answer(&Handler::SelectBrowseItem, "{\"itemId\":" + id + "}")["result"];
    }
    Json::Value Filter(const std::string& text) {
        return Answer(&Handler::FilterBrowseList, "{\"searchText\":\"" + text + "\"}")["result"];
    }
};

TEST_F(BrowseMethods, ListTheSixTopCategoriesAtTheRoot) {
    masks[Category::kTopLevelQuery] = Category::kArtist | Category::kTrack | Category::kPodcast;
    const Json::Value result = Answer(&Handler::GetBrowseList, "[]")["result"];
    EXPECT_EQ(result["isRootCategory"], true);
    EXPECT_EQ(result["isLastCategory"], false);
    EXPECT_EQ(result["totalCount"], 0);
    EXPECT_EQ(result["currIndex"], 0);
    std::ostringstream items;
    for (const Json::Value& item : result["categoryItems"])
        items << item["itemId"].asInt() << item["itemName"].asString() << item["isSupported"].asBool() << ' ';
    EXPECT_EQ(items.str(), "2Playlists0 4Artists1 32Songs1 8Albums0 16Genres0 64Composers0 ");
}

TEST_F(BrowseMethods, PageThroughALevelCircularly) {
    EXPECT_EQ(Select("32"), "browsing");
    Json::Value response = Page("3", "4");
    EXPECT_THAT(NamesOf(response), ElementsAre("Wait", "What Goes On", "Girl", "Michelle"));
    EXPECT_EQ(response["result"]["categoryItems"][0]["itemId"], IdOf(Category::kTrack, 3));
    EXPECT_EQ(response["result"]["totalCount"], 5);
    EXPECT_EQ(response["result"]["currIndex"], 3);
    EXPECT_EQ(response["result"]["isRootCategory"], false);
    EXPECT_EQ(response["result"]["isLastCategory"], true);

    response = Page("-7", "50");
    EXPECT_EQ(NamesOf(response), names[Category::kTrack]);
    EXPECT_EQ(response["result"]["currIndex"], -7);
    for (const char* nothing : {"{}", "null", "{\"itemCount\":-2147483648,\"startIndex\":2147483647}"})
        EXPECT_EQ(Answer(&Handler::GetBrowseList, nothing)["result"]["categoryItems"], Json::arrayValue);
    EXPECT_THROW(Page("\"1\"", "1"), Json::LogicError);
    EXPECT_THROW(Page("0", "2147483648"), Json::LogicError);
    EXPECT_THROW(Answer(&Handler::GetBrowseList, "[1]"), Json::LogicError);

    simulator.Fail("eDevMgriPodGetItems", 54);
    EXPECT_THAT(NamesOf(Page("0", "2")), ElementsAre("", ""));
    EXPECT_THAT(Log(),
                testing::HasSubstr("[WARN ] Return from eDevMgrGetItems is :DEV_MGR_DEVICE_NOT_RESPONDING "
                                   "Num entries returned = 2\n"));
}

TEST_F(BrowseMethods, PageThroughAFilteredLevel) {
    EXPECT_EQ(Filter("w"), "failure");
    EXPECT_EQ(Answer(&Handler::FilterBrowseList)["result"], "failure");
    names[Category::kTrack] = {"b", "xa0", "XA1", "c", "xa2", "xA3", "xa4"};
    EXPECT_EQ(Select("32"), "browsing");
    EXPECT_EQ(Answer(&Handler::FilterBrowseList)["result"], "failure");
    EXPECT_EQ(Filter("c"), "success");
    EXPECT_EQ(Filter("Xa"), "success");
    Json::Value response = Page("7", "3");
    EXPECT_THAT(NamesOf(response), ElementsAre("xa2", "xA3", "xa4"));
    EXPECT_EQ(response["result"]["categoryItems"][0]["itemId"], IdOf(Category::kTrack, 4));
    EXPECT_EQ(response["result"]["totalCount"], 5);
    EXPECT_EQ(response["result"]["currIndex"], 7);
    EXPECT_THAT(NamesOf(Page("3", "10")), ElementsAre("xa0", "XA1", "xa2", "xA3", "xa4"));
    EXPECT_EQ(CallCount("eDevMgriPodGetItems"), 1u);

    EXPECT_EQ(Filter("no such name"), "success");
    EXPECT_THAT(NamesOf(Page("3", "10")), IsEmpty());
    EXPECT_EQ(Filter(""), "success");
    EXPECT_THAT(NamesOf(Page("0", "1")), ElementsAre("b"));
}

TEST_F(BrowseMethods, SelectByTheIdsThatWereListed) {
    EXPECT_FALSE(Answer(&Handler::SelectBrowseItem).isMember("result"));
    EXPECT_EQ(Answer(&Handler::SelectBrowseItem, "{}")["result"], "failure");
    EXPECT_EQ(Select("6"), "browsing");  // artists and playlists at once: some bit of it is offered
    EXPECT_EQ(Answer(&Handler::SelectBrowseBack)["result"], "success");
    EXPECT_EQ(Answer(&Handler::SelectBrowseBack)["result"], "failure");
    EXPECT_EQ(Select("32"), "browsing");
    EXPECT_THROW(Select("\"3\""), Json::LogicError);
    EXPECT_THROW(Select("4294967296"), Json::LogicError);
    EXPECT_EQ(CallCount("eDevMgriPodSelectCategorizedIndex"), 0u);
    for (const char* id : {"4294967295", "-1"}) {
        EXPECT_EQ(Select(id), "success");
        EXPECT_EQ(LastArguments("eDevMgriPodSelectCategorizedIndex").back(), 4294967295) << id;
        EXPECT_EQ(Select("32"), "browsing");
    }
    simulator.Fail("eDevMgriPodSelectCategorizedIndex", 100);
    EXPECT_EQ(Select("0"), "failure");
    EXPECT_EQ(Answer(&Handler::ResetBrowseList)["result"]["resetSuccess"], true);
    simulator.Fail("eDevMgriPodResetDatabase", 44);
    EXPECT_EQ(Answer(&Handler::ResetBrowseList)["result"]["resetSuccess"], false);
}

TEST_F(BrowseMethods, ListAllSongsFromTheRootOnly) {
    Json::Value response = Answer(&Handler::GetSongList);
    EXPECT_EQ(NamesOf(response), names[Category::kTrack]);
    EXPECT_EQ(response["result"]["isRootCategory"], false);
    EXPECT_EQ(response["result"]["isLastCategory"], true);
    EXPECT_EQ(response["result"].size(), 3u);
    EXPECT_EQ(CallCount("eDevMgriPodGetItems"), 1u);
    EXPECT_EQ(manager.CurrentBrowseLevel()->category, Category::kTrack);
    EXPECT_FALSE(Answer(&Handler::GetSongList).isMember("result"));

    manager.ResetDatabase();
    names[Category::kTrack].clear();
    EXPECT_FALSE(Answer(&Handler::GetSongList).isMember("result"));
    manager.ResetDatabase();
    simulator.Fail("eDevMgriPodMdGetCategories", 44);
    EXPECT_FALSE(Answer(&Handler::GetSongList).isMember("result"));
}

TEST_F(BrowseMethods, JumpFromLetterToLetter) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(Answer(&Handler::GetNextAlphaNumericIndex)["result"]["itemIndex"], -1);
    EXPECT_EQ(Answer(&Handler::GetPrevAlphaNumericIndex, "[]")["result"]["itemIndex"], 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Not Browsing\nNot Browsing\n");

    EXPECT_EQ(Select("4"), "browsing");
    EXPECT_EQ(Filter("nothing like it"), "success");  // jumps go through the whole level
    EXPECT_EQ(Answer(&Handler::GetNextAlphaNumericIndex, "{\"startIndex\":0}")["result"]["itemIndex"], 2);
    EXPECT_EQ(Answer(&Handler::GetPrevAlphaNumericIndex, "{\"startIndex\":3}")["result"]["itemIndex"], 1);
    EXPECT_EQ(Answer(&Handler::GetNextAlphaNumericIndex)["result"]["itemIndex"], 2);
    simulator.Fail("eDevMgriPodGetItems", 54);
    EXPECT_EQ(
        Answer(&Handler::GetNextAlphaNumericIndex, "{\"startIndex\":-2147483648}")["result"]["itemIndex"], 3);
    EXPECT_EQ(
        Answer(&Handler::GetPrevAlphaNumericIndex, "{\"startIndex\":2147483647}")["result"]["itemIndex"], 0);
}

TEST_F(BrowseMethods, MendNamesForTheWireOnly) {
    const std::string cut = std::string(254, 'x') + "\xC3\xA9";
    names[Category::kArtist] = {std::string(256, 'x'), cut.substr(0, 255), "caf\xE9", "\xC3\x89tude"};
    EXPECT_EQ(Select("4"), "browsing");
    EXPECT_THAT(NamesOf(Page("0", "4")),
                ElementsAre(std::string(256, 'x'), std::string(254, 'x'), "caf\xEF\xBF\xBD", "\xC3\x89tude"));
    EXPECT_EQ(Filter("\xEF\xBF\xBD"), "success");
    EXPECT_THAT(NamesOf(Page("0", "4")), IsEmpty());
}

TEST_F(BrowseMethods, AskForTheItemsBelowTheSelectedOne) {
    const auto askedFor = [this](int start, int count) {
        EXPECT_THAT(LastArguments("eDevMgriPodGetItems"),
                    ElementsAre(0, 0, Category::kArtist, 400002, Category::kAlbum, start, count));
    };
    EXPECT_EQ(Select("4"), "browsing");
    EXPECT_EQ(Select("400002"), "browsing");
    Page("0", "1");
    askedFor(0, 1);
    EXPECT_EQ(Answer(&Handler::GetNextAlphaNumericIndex, "{\"startIndex\":1}")["result"]["itemIndex"], 1);
    askedFor(0, 2);
    Answer(&Handler::GetPrevAlphaNumericIndex, "{\"startIndex\":1}");
    askedFor(0, 1);
    Page("1", "1");
    Filter("e");
    askedFor(0, 2);
}

TEST_F(BrowseMethods, SurviveADeviceThatLiesAboutCounts) {
    EXPECT_EQ(Select("32"), "browsing");
    DeviceSimulator::StandIns liar;
    liar.eDevMgriPodGetItems = [](u32, u32, i32, u32, u32, u32, u32* count, BrowseItem* items) {
        items[0].id = 9;
        *count = UINT32_MAX;
        return ResultCode::kUnknownFailure;
    };
    liar.eDevMgriPodMdGetCategories = [](u32, u32, u32, u32* mask) {
        *mask = UINT32_MAX;
        return ResultCode::kSuccess;
    };
    simulator.SetStandIns(std::move(liar));
    const Json::Value response = Page("4", "2");
    EXPECT_THAT(NamesOf(response), ElementsAre("", ""));
    EXPECT_EQ(response["result"]["isLastCategory"], false);
    EXPECT_EQ(Filter("a"), "success");
}

}  // namespace
