#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/platform/HTTPClient.h"
#include "QuorvaneCore/pricing/URLSessionPricingFetcher.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScopedVariables.h"
#include "tests/support/ScratchHome.h"

namespace quorvane {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using testing::LoopbackServer;
using ::testing::Not;
using testing::ProgramRun;
using testing::ScopedVariables;
using ::testing::SizeIs;

class PricingFetch : public ::testing::Test {
protected:
    [[nodiscard]] static PricingFetchResult fetched(const LoopbackServer& server,
                                                    std::optional<std::string> etag = std::nullopt,
                                                    HTTPClient::Limits limits = {.seconds = 10}) {
        return URLSessionPricingFetcher{server.url(), HTTPClient{limits}}.fetch(std::move(etag)).get();
    }
    [[nodiscard]] static PricingFetchResult answered(const std::string& bytes) {
        const LoopbackServer server{[bytes](const std::string&) { return bytes; }};
        return fetched(server);
    }
    [[nodiscard]] static std::string failure(const std::function<void()>& fetch) {
        try {
            fetch();
        } catch (const HTTPError& error) {
            return error.what();
        }
        return "no failure";
    }

    ScopedVariables noProxies{"http_proxy", "https_proxy", "all_proxy", "HTTPS_PROXY", "ALL_PROXY"};
};

TEST_F(PricingFetch, bodyAndTagComeAsTheyWereSent) {
    const std::string body = "{\"models\":\r\n{}}\xff\n";
    EXPECT_EQ(answered(LoopbackServer::answer("200 OK", "ETag: \"v 1\"\r\n", body)),
              PricingFetchResult{(PricingUpdated{.data = body, .etag = "\"v 1\""})});
    EXPECT_EQ(answered(LoopbackServer::answer("203 Fine", "", body)),
              PricingFetchResult{(PricingUpdated{.data = body, .etag = std::nullopt})});
}

TEST_F(PricingFetch, tagIsSentWhereThereIsOne) {
    const LoopbackServer server{[](const std::string&) { return LoopbackServer::answer("304 Not Modified", "", ""); }};
    EXPECT_EQ(fetched(server, "\"v1\""), PricingFetchResult{PricingNotModified{}});
    static_cast<void>(fetched(server, ""));
    static_cast<void>(fetched(server));
    ASSERT_THAT(server.requests(), SizeIs(3));
    EXPECT_THAT(server.requests()[0],
                AllOf(HasSubstr("GET /stable/pricing.json HTTP/1.1\r\n"), HasSubstr("\r\nIf-None-Match: \"v1\"\r\n")));
    EXPECT_THAT(server.requests()[1], Not(HasSubstr("If-None-Match")));
    EXPECT_THAT(server.requests()[2], Not(HasSubstr("If-None-Match")));
}

TEST_F(PricingFetch, tagWithALineBreakIsNotSentAndAddsNoHeader) {
    const LoopbackServer server{[](const std::string&) { return LoopbackServer::answer("200 OK", "", "{}"); }};
    for (const std::string& tag : {std::string{"a\r\nX-Other: b"}, std::string{"a\nb"}, std::string{"a\0b", 3}})
        EXPECT_EQ(fetched(server, tag), PricingFetchResult{(PricingUpdated{.data = "{}", .etag = std::nullopt})});
    ASSERT_THAT(server.requests(), SizeIs(3));
    for (const std::string& head : server.requests())
        EXPECT_THAT(head, AllOf(Not(HasSubstr("X-Other")), Not(HasSubstr("If-None-Match"))));
    EXPECT_THAT(failure([&] {
                    static_cast<void>(HTTPClient{}.get(server.url(), {{"X-One", "a\r\nX-Other: b"}}));
                }),
                HasSubstr("X-One"));
    EXPECT_THAT(server.requests(), SizeIs(3));
}

TEST_F(PricingFetch, schemeMayBeWrittenInAnyCase) {
    const LoopbackServer server{[](const std::string& head) {
        return head.starts_with("GET /moved") ? LoopbackServer::answer("200 OK", "", "{}")
                                              : LoopbackServer::answer("302 Found", "Location: /moved\r\n", "");
    }};
    const std::string url = "hTTp" + server.url().substr(4);
    EXPECT_EQ(URLSessionPricingFetcher{url}.fetch(std::nullopt).get(),
              PricingFetchResult{(PricingUpdated{.data = "{}", .etag = std::nullopt})});
}

TEST_F(PricingFetch, otherStatusIsAnErrorWithItsNumber) {
    for (const auto& [line, status] : {std::pair{"404 Not Found", 404}, {"500 Sorry", 500}, {"300 Choose", 300}}) {
        try {
            static_cast<void>(answered(LoopbackServer::answer(line, "", "{}")));
            ADD_FAILURE() << line;
        } catch (const RemotePricingError& error) {
            EXPECT_EQ(error.status(), status);
            EXPECT_EQ(error.what(), "HTTP status " + std::to_string(status));
        }
    }
}

TEST_F(PricingFetch, redirectIsFollowedAndTheLastTagCounts) {
    const LoopbackServer server{[](const std::string& head) {
        return head.starts_with("GET /moved")
                   ? LoopbackServer::answer("200 OK", "ETag: new\r\n", "{}")
                   : LoopbackServer::answer("302 Found", "ETag: old\r\nLocation: /moved\r\n", "");
    }};
    EXPECT_EQ(fetched(server), PricingFetchResult{(PricingUpdated{.data = "{}", .etag = "new"})});
}

TEST_F(PricingFetch, redirectInACircleEnds) {
    const LoopbackServer server{
        [](const std::string&) { return LoopbackServer::answer("302 Found", "Location: /again\r\n", ""); }};
    EXPECT_THAT(failure([&] { static_cast<void>(fetched(server)); }), HasSubstr("redirects"));
    EXPECT_THAT(server.requests(), SizeIs(11));
}

TEST_F(PricingFetch, redirectToAFileIsRefused) {
    const testing::ScratchHome home;
    const std::string file = home.write("secret", "{}");
    const LoopbackServer server{[file](const std::string&) {
        return LoopbackServer::answer("302 Found", "Location: file://" + file + "\r\n", "");
    }};
    EXPECT_THAT(failure([&] { static_cast<void>(fetched(server)); }), HasSubstr("file"));
}

TEST_F(PricingFetch, slowServerIsGivenUp) {
    const LoopbackServer server{[](const std::string&) {
        std::this_thread::sleep_for(std::chrono::milliseconds{600});
        return std::string{};
    }};
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(failure([&] { static_cast<void>(fetched(server, std::nullopt, {.seconds = 0.2})); }),
                HasSubstr("timed out"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds{5});
}

TEST_F(PricingFetch, answerThatIsCutShortIsNone) {
    std::string cut = LoopbackServer::answer("200 OK", "", std::string(1000, 'x'));
    cut.resize(cut.size() - 400);
    EXPECT_NE(failure([&] { static_cast<void>(answered(cut)); }), "no failure");
    EXPECT_NE(failure([&] { static_cast<void>(answered("")); }), "no failure");
    EXPECT_NE(failure([&] { static_cast<void>(answered("garbage\r\n\r\n")); }), "no failure");
}

std::string gzipped(const std::string& text) {
    return ProgramRun::of({"gzip", "-c"}, {.input = text}).output;
}

TEST_F(PricingFetch, compressedBodyIsUnpacked) {
    const std::string body = "{\"models\":" + std::string(5000, ' ') + "{}}";
    const std::string packed = gzipped(body);
    ASSERT_LT(packed.size(), 200U);
    EXPECT_EQ(answered(LoopbackServer::answer("200 OK", "Content-Encoding: gzip\r\n", packed)),
              PricingFetchResult{(PricingUpdated{.data = body, .etag = std::nullopt})});
}

TEST_F(PricingFetch, bodyUpToTheCapIsTakenAndALongerOneRefused) {
    const std::size_t cap = HTTPClient::Limits{}.bytes;
    EXPECT_EQ(cap, 16U * 1024 * 1024);
    const PricingFetchResult most = answered(LoopbackServer::answer("200 OK", "", std::string(cap, ' ')));
    EXPECT_EQ(std::get<PricingUpdated>(most).data.size(), cap);
    EXPECT_THAT(
        failure([&] { static_cast<void>(answered(LoopbackServer::answer("200 OK", "", std::string(cap + 1, ' ')))); }),
        HasSubstr("longer than 16777216 bytes"));
    EXPECT_THAT(failure([&] {
                    static_cast<void>(answered(LoopbackServer::answer("200 OK", "", std::string(50'000'000, ' '))));
                }),
                HasSubstr("longer than"));
}

TEST_F(PricingFetch, smallBodyThatUnpacksBeyondTheCapIsRefused) {
    const std::string packed = gzipped(std::string(50'000'000, ' '));
    ASSERT_LT(packed.size(), 100'000U);
    EXPECT_THAT(failure([&] {
                    static_cast<void>(answered(LoopbackServer::answer("200 OK", "Content-Encoding: gzip\r\n", packed)));
                }),
                HasSubstr("longer than"));
}

TEST_F(PricingFetch, serverThatIsNotThereIsAnError) {
    std::string url;
    {
        const LoopbackServer gone{[](const std::string&) { return std::string{}; }};
        url = gone.url();
    }
    EXPECT_THAT(failure([&] { static_cast<void>(URLSessionPricingFetcher{url}.fetch(std::nullopt).get()); }),
                HasSubstr("connect"));
}

TEST_F(PricingFetch, fileIsReadWithoutATag) {
    const testing::ScratchHome home;
    const std::string file = home.write("list.json", "{}");
    EXPECT_EQ(URLSessionPricingFetcher{"file://" + file}.fetch("tag").get(),
              PricingFetchResult{(PricingUpdated{.data = "{}", .etag = std::nullopt})});
}

TEST_F(PricingFetch, otherProtocolsAreRefused) {
    for (const char* url : {"ftp://127.0.0.1/", "gopher://127.0.0.1/", "nonsense://x", ""}) {
        EXPECT_NE(failure([&] { static_cast<void>(URLSessionPricingFetcher{url}.fetch(std::nullopt).get()); }),
                  "no failure")
            << url;
    }
}

}  // namespace
}  // namespace quorvane
