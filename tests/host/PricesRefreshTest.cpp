#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/host/HostRun.h"
#include "tests/support/LoopbackServer.h"

namespace quorvane::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

constexpr const char* folder = "Library/Application Support/Quorvane/";
constexpr const char* list =
    R"({"models":{"claude-opus-4-8":{"input_cost_per_token":0.001,"output_cost_per_token":0.002}}})";

ProgramRun run(const std::vector<std::string>& arguments) {
    ProgramRun::Options options;
    options.environment = {{"http_proxy", ""}, {"https_proxy", ""}, {"all_proxy", ""}, {"NO_PROXY", "127.0.0.1"}};
    return runHost(arguments, options);
}

ProgramRun refreshFrom(const LoopbackServer& server) {
    return run({"prices", "refresh", "--url", server.url()});
}

/// Sends the list, and 304 to whoever has it.
LoopbackServer::Handler listServer() {
    return [](const std::string& head) {
        return head.find("If-None-Match: \"v1\"") == std::string::npos
                   ? LoopbackServer::answer("200 OK", "ETag: \"v1\"\r\n", list)
                   : LoopbackServer::answer("304 Not Modified", "", "");
    };
}

TEST(PricesRefresh, fetchesOnceAndThenSaysThatNothingChanged) {
    const ScratchHome home;
    const LoopbackServer server{listServer()};
    const ProgramRun first = refreshFrom(server);
    EXPECT_EQ(first.status, 0) << first.error;
    EXPECT_EQ(first.output, "fetched: 1 model from " + server.url() + "\n");
    EXPECT_EQ(home.read(std::string{folder} + "pricing-remote.json"), list);
    EXPECT_EQ(home.read(std::string{folder} + "pricing-remote.etag"), "\"v1\"");
    const ProgramRun second = refreshFrom(server);
    EXPECT_EQ(second.status, 0) << second.error;
    EXPECT_EQ(second.output, "unchanged since the last fetch: 1 model\n");
}

TEST(PricesRefresh, pricesTellWhichListTheyAreFrom) {
    const ScratchHome home;
    const LoopbackServer server{listServer()};
    ASSERT_EQ(refreshFrom(server).status, 0);
    const ProgramRun prices = run({"prices", "--json"});
    const ProgramRun sources = ProgramRun::of(
        {"jq", "-c",
         "[.sources[\"claude-opus-4-8\"], .sources[\"grok-4.5\"], (.sources | length) == (.models | length)]"},
        {.input = prices.output});
    EXPECT_EQ(sources.output, "[\"fetched\",\"built-in\",true]\n");
    EXPECT_THAT(run({"prices", "claude-opus-4-8-20260101"}).output, AllOf(HasSubstr("1000.00"), HasSubstr("fetched")));
    EXPECT_THAT(run({"prices", "grok-build"}).output, HasSubstr("built-in"));
}

TEST(PricesRefresh, summaryCountsWithTheFetchedPrice) {
    const ScratchHome home;
    home.write(".claude/projects/-home-ana/s.jsonl",
               claudeCall("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 1000, 0));
    const LoopbackServer server{listServer()};
    ASSERT_EQ(refreshFrom(server).status, 0);
    EXPECT_THAT(run({"--now", "2026-03-01T09:30:00Z"}).output, HasSubstr("$1.00"));
}

struct FailureCase {
    const char* name;
    std::string answer;
    const char* cause;
};

class PricesRefreshFailure : public ::testing::TestWithParam<FailureCase> {};

TEST_P(PricesRefreshFailure, isOneLineWithTheAddressAndTheCause) {
    const ScratchHome home;
    const LoopbackServer server{[](const std::string&) { return GetParam().answer; }};
    const ProgramRun failed = refreshFrom(server);
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_THAT(failed.error, AllOf(HasSubstr("quorvane: " + server.url() + ": "), HasSubstr(GetParam().cause)));
    EXPECT_EQ(failed.error.find('\n'), failed.error.size() - 1);
    EXPECT_FALSE(home.exists(std::string{folder} + "pricing-remote.json"));
}

INSTANTIATE_TEST_SUITE_P(
    ByAnswer, PricesRefreshFailure,
    ::testing::Values(FailureCase{"notFound", LoopbackServer::answer("404 Not Found", "", ""), "HTTP status 404"},
                      FailureCase{"noList", LoopbackServer::answer("200 OK", "", "<html>"), "no price list"},
                      FailureCase{"emptyList", LoopbackServer::answer("200 OK", "", R"({"models":{}})"),
                                  "no price list"},
                      FailureCase{"nothing", "", "reply"}),
    [](const auto& tested) { return std::string{tested.param.name}; });

/// A server with a certificate that nobody vouches for, and the program that asks it.
constexpr const char* askOverTLS = R"(
import http.server, ssl, subprocess, sys, threading
folder, program = sys.argv[1:]
subprocess.run(['openssl', 'req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-subj', '/CN=127.0.0.1', '-addext',
                'subjectAltName=IP:127.0.0.1', '-keyout', folder + '/key', '-out', folder + '/certificate'],
               check=True, capture_output=True)
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(folder + '/certificate', folder + '/key')
server = http.server.HTTPServer(('127.0.0.1', 0), http.server.SimpleHTTPRequestHandler)
server.socket = context.wrap_socket(server.socket, server_side=True)
threading.Thread(target=server.serve_forever, daemon=True).start()
url = 'https://127.0.0.1:%d/' % server.server_address[1]
result = subprocess.run([program, 'prices', 'refresh', '--url', url], capture_output=True, text=True)
print(result.returncode, result.stdout, result.stderr)
)";

TEST(PricesRefresh, serverWithoutATrustedCertificateIsNotBelieved) {
    const ScratchHome home;
    ProgramRun::Options options;
    options.environment = {{"https_proxy", ""}, {"all_proxy", ""}, {"NO_PROXY", "127.0.0.1"}};
    const ProgramRun asked = ProgramRun::of({"python3", "-c", askOverTLS, home.path(), QUORVANE_PROGRAM}, options);
    EXPECT_EQ(asked.status, 0) << asked.error;
    EXPECT_THAT(asked.output,
                AllOf(::testing::StartsWith("1  quorvane: https://127.0.0.1:"), HasSubstr("certificate")));
}

TEST(PricesRefresh, tagThatOutlivedItsListDoesNotKeepItAway) {
    for (const char* left : {"", "damaged"}) {
        const ScratchHome home;
        const LoopbackServer server{listServer()};
        ASSERT_EQ(refreshFrom(server).status, 0);
        home.remove(std::string{folder} + "pricing-remote.json");
        if (*left != '\0') home.write(std::string{folder} + "pricing-remote.json", left);
        const ProgramRun again = refreshFrom(server);
        EXPECT_EQ(again.status, 0) << again.error;
        EXPECT_EQ(again.output, "fetched: 1 model from " + server.url() + "\n");
        EXPECT_EQ(home.read(std::string{folder} + "pricing-remote.json"), list);
        EXPECT_EQ(home.read(std::string{folder} + "pricing-remote.etag"), "\"v1\"");
    }
}

TEST(PricesRefresh, serverThatAlwaysSaysUnchangedIsAskedTwiceAtMost) {
    const ScratchHome home;
    home.write(std::string{folder} + "pricing-remote.etag", "\"v1\"");
    const LoopbackServer server{[](const std::string&) { return LoopbackServer::answer("304 Not Modified", "", ""); }};
    const ProgramRun run = refreshFrom(server);
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.output, "unchanged since the last fetch: no list is kept\n");
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST(PricesRefresh, folderThatCannotBeMadeIsNamed) {
    const ScratchHome home;
    home.write("Library/Application Support", "a file in the way");
    const LoopbackServer server{listServer()};
    const ProgramRun failed = refreshFrom(server);
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(failed.error, AllOf(HasSubstr(home.path("Library/Application Support")), HasSubstr("Not a directory")));
    EXPECT_EQ(failed.error.find('\n'), failed.error.size() - 1);
}

TEST(PricesRefresh, fileThatCannotBeWrittenIsNamed) {
    for (const char* name : {"pricing-remote.json", "pricing-remote.etag"}) {
        const ScratchHome home;
        home.write(std::string{folder} + "other", "");
        ASSERT_EQ(::mkdir(home.path(folder + std::string{name}).c_str(), 0700), 0);
        const LoopbackServer server{listServer()};
        const ProgramRun failed = refreshFrom(server);
        EXPECT_EQ(failed.status, 1);
        EXPECT_THAT(failed.error, AllOf(HasSubstr(home.path(folder + std::string{name})), HasSubstr("directory")));
        EXPECT_EQ(failed.error.find('\n'), failed.error.size() - 1);
    }
}

}  // namespace
}  // namespace quorvane::testing
