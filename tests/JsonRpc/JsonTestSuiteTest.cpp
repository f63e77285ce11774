// The public JSON parsing test suite, each file as the params of a request on the port.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "tests/JsonRpc/RunningServer.h"

namespace {

// The file leaves an object open. The brace that would end the request closes that one instead, and the
// request stays open: only the end of the stream tells that nothing more is to come.
const std::set<std::string> kRefusedAtTheEnd{
    "n_object_missing_value.json",
    "n_object_no-colon.json",
    "n_structure_comma_instead_of_closing_brace.json",
    "n_structure_object_unclosed_no_value.json",
    "n_structure_open_array_open_object.json",
    "n_structure_open_object.json",
    "n_structure_open_object_comma.json",
    "n_structure_open_object_string_with_apostrophes.json",
    "n_structure_open_open.json",
    "n_structure_unclosed_object.json",
};

// The file's second brace closes the request, which is good then; the request's own is left over and refused.
const std::string kClosesTheRequest = "n_structure_object_followed_by_closing_object.json";

// Longer than a request may be, which costs the connection.
const std::string kTooLong = "n_structure_open_array_object.json";

const std::string kBehind = "{\"id\":\"behind\",\"jsonrpc\":\"2.0\",\"result\":null}\n";

std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What comes back before the answer to a request behind it, or before the connection's end.
std::string RepliesTo(const RunningServer& server, const std::string& name, const std::string& params) {
    TestClient client(server);
    client.Send("{\"jsonrpc\":\"2.0\",\"method\":\"echo\",\"id\":1,\"params\":" + params + "}");
    if (kRefusedAtTheEnd.contains(name)) {
        client.EndSending();
    } else {
        client.Send("\n{\"jsonrpc\":\"2.0\",\"method\":\"echo\",\"id\":\"behind\"}");
    }
    std::string replies;
    std::string line;
    while (!(line = client.ReadLine()).empty() && line != kBehind) {
        replies += line;
    }
    const bool mayEnd = kRefusedAtTheEnd.contains(name) || name == kTooLong;
    EXPECT_EQ(line, mayEnd ? "" : kBehind) << name;
    return replies;
}

TEST(JsonTestSuiteTest, IsTakenOrRefusedAsItSaysAndTheConnectionLivesOn) {
    RunningServer server;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(JSON_TEST_SUITE)) {
        const std::string name = entry.path().filename();
        const std::string replies = RepliesTo(server, name, Contents(entry.path()));
        const bool isTaken = replies.starts_with("{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":");
        const bool isRefused = replies.starts_with(kParseError);
        const bool isOneLine = replies.find('\n') + 1 == replies.size();
        if (name == kClosesTheRequest) {
            EXPECT_TRUE(isTaken && replies.ends_with("\n" + kParseError));
        } else if (name.front() == 'n') {
            EXPECT_TRUE(isRefused) << name << ": " << replies;
        } else {
            EXPECT_TRUE(isOneLine && (isTaken || (isRefused && name.front() == 'i')))
                << name << ": " << replies;
        }
        if (HasFailure()) {
            return;  // what waits for an answer in vain does so for long
        }
        ++files;
    }
    EXPECT_EQ(files, 318);
}

}  // namespace
