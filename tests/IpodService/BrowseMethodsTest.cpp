#include "tests/IpodService/BrowseFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BrowseMethodsTest : public BrowseFixture {
  protected:
    BrowseMethodsTest() { m_manager->ResetDatabase(); }

    Json::Value Page(const std::string& start, const std::string& count) {
        return Result(&Handler::GetBrowseList, "{'startIndex':" + start + ",'itemCount':" + count + "}");
    }
    Texts Names(const std::string& start, const std::string& count) {
        Texts list;
        const Json::Value page = Page(start, count);
        for (const Json::Value& item : page["categoryItems"]) {
            list.push_back(item["itemName"].asString());
        }
        return list;
    }
    Json::Value Select(const std::string& id) {
        return Result(&Handler::SelectBrowseItem, "{'itemId':" + id + "}");
    }
    Json::Value Filter(const std::string& text) {
        return Result(&Handler::FilterBrowseList, "{'searchText':'" + text + "'}");
    }
};

TEST_F(BrowseMethodsTest, ListTheSixTopCategoriesAtTheRoot) {
    m_masks[DEV_MGR_CATEGORY_TOP_LEVEL] =
        DEV_MGR_CATEGORY_ARTIST | DEV_MGR_CATEGORY_TRACK | DEV_MGR_CATEGORY_PODCAST;
    TakeLog();
    const Json::Value root = Result(&Handler::GetBrowseList, "[]");
    EXPECT_THAT(TakeLog(), testing::HasSubstr("[INFO ] SupportedCategories ARTIST TRACK"));
    std::ostringstream items;
    for (const Json::Value& item : root["categoryItems"]) {
        items << item["itemId"].asInt() << item["itemName"].asString() << item["isSupported"].asBool() << ' ';
    }
    EXPECT_EQ(items.str(), "2Playlists0 4Artists1 32Songs1 8Albums0 16Genres0 64Composers0 ");
}

TEST_F(BrowseMethodsTest, PageThroughALevelCircularly) {
    m_names[DEV_MGR_CATEGORY_TRACK][3] += "\xE9";  // mended for the wire
    EXPECT_EQ(Select("32"), "browsing");
    const Json::Value page = Page("3", "4");
    EXPECT_EQ(page["categoryItems"][0]["itemId"].asUInt(), IdOf(DEV_MGR_CATEGORY_TRACK, 3));
    EXPECT_EQ(page["totalCount"], 5);
    EXPECT_EQ(page["currIndex"], 3);
    EXPECT_THAT(Names("3", "4"), ElementsAre("Wander\xEF\xBF\xBD", "Whistle", "Gorse", "Meadow"));
    EXPECT_EQ(Names("-7", "50").size(), 5u);
    EXPECT_THAT(Names("2147483647", "-2147483648"), IsEmpty());
    EXPECT_THROW(Page("0", "2147483648"), Json::LogicError);
    EXPECT_EQ(Select("-1"), "success");  // as the device takes it: the highest id
    EXPECT_THAT(TakeCalls(), testing::Contains("eDevMgriPodSelectCategorizedIndex(32,4294967295)"));
}

TEST_F(BrowseMethodsTest, SelectWhatTheDeviceOffersAndSayWhenItFails) {
    m_masks[DEV_MGR_CATEGORY_TOP_LEVEL] = DEV_MGR_CATEGORY_ARTIST;
    for (const char* id : {"0", "8", "1024", "2147483648"}) {
        EXPECT_EQ(Select(id), "failure") << id;
    }
    m_masks[DEV_MGR_CATEGORY_TOP_LEVEL] |= DEV_MGR_CATEGORY_ALBUM;
    EXPECT_EQ(Select("8"), "browsing");
    EXPECT_THROW(Select("'3'"), Json::LogicError);
    EXPECT_THROW(Select("4294967296"), Json::LogicError);
    m_simulator.Fail("eDevMgriPodSelectCategorizedIndex", DEV_MGR_IAP_INVALID_INDEX, 1);
    EXPECT_EQ(Select("0"), "failure");
    EXPECT_EQ(Page("0", "1")["totalCount"], 2) << "still there";
    EXPECT_EQ(Result(&Handler::SelectBrowseBack), "success");
    EXPECT_EQ(Result(&Handler::SelectBrowseBack), "failure");
    for (const bool fails : {true, false}) {
        if (fails) {
            m_simulator.Fail("eDevMgriPodResetDatabase", DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED, 1);
        }
        EXPECT_EQ(Result(&Handler::ResetBrowseList)["resetSuccess"], !fails);
    }
}

TEST_F(BrowseMethodsTest, ListAllSongsFromTheRootOnly) {
    const Json::Value songs = Result(&Handler::GetSongList);
    EXPECT_EQ(songs["categoryItems"].size(), 5u);
    EXPECT_EQ(songs["categoryItems"][4]["itemName"], "Whistle");
    EXPECT_TRUE(Result(&Handler::GetSongList).isNull()) << "not at the root any more";
    m_manager->ResetDatabase();
    m_simulator.Fail("eDevMgriPodMdGetCategories", DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED, 1);
    EXPECT_TRUE(Result(&Handler::GetSongList).isNull());
    m_names[DEV_MGR_CATEGORY_TRACK].clear();
    EXPECT_TRUE(Result(&Handler::GetSongList).isNull());
}

TEST_F(BrowseMethodsTest, PageThroughAFilteredLevel) {
    EXPECT_EQ(Filter("w"), "failure");
    m_names[DEV_MGR_CATEGORY_TRACK] = {"b", "xa0", "XA1", "c", "xa2", "xA3", "xa4"};
    EXPECT_EQ(Select("32"), "browsing");
    EXPECT_EQ(Filter("Xa"), "success");
    EXPECT_EQ(Page("7", "3")["categoryItems"][0]["itemId"].asUInt(), IdOf(DEV_MGR_CATEGORY_TRACK, 4));
    EXPECT_THAT(Names("7", "3"), ElementsAre("xa2", "xA3", "xa4"));
    EXPECT_THAT(Names("3", "10"), ElementsAre("xa0", "XA1", "xa2", "xA3", "xa4"));
    EXPECT_EQ(CallCount("eDevMgriPodGetItems"), 1u);
    EXPECT_EQ(Filter("no such name"), "success");  // jumps go through the whole level
    EXPECT_EQ(Result(&Handler::GetNextAlphaNumericIndex, "{'startIndex':0}")["itemIndex"], 1);
    EXPECT_EQ(Result(&Handler::GetPrevAlphaNumericIndex, "{'startIndex':6}")["itemIndex"], 3);
    EXPECT_THAT(Names("3", "10"), IsEmpty());
    EXPECT_EQ(Filter(""), "success");
    EXPECT_THAT(Names("0", "1"), ElementsAre("b"));
}

}  // namespace
