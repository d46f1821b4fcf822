#pragma once
#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorvane::testing {

/// An HTTP server on 127.0.0.1, at a port of the system's choice, that answers with the bytes it is told to.
/// One connection at a time, one request a connection.
class LoopbackServer {
public:
    /// Makes of a request's head the bytes of the answer; runs on the server's thread.
    using Handler = std::function<std::string(const std::string& head)>;

    explicit LoopbackServer(Handler handler);
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer();

    [[nodiscard]] std::string url(const std::string& path = "/stable/pricing.json") const;

    /// The heads of the requests so far.
    [[nodiscard]] std::vector<std::string> requests() const;

    /// An answer with a status line, headers (each with its line end) and a body, whose length is told.
    [[nodiscard]] static std::string answer(const std::string& status, const std::string& headers,
                                            const std::string& body);

private:
    void serve();
    void serve(int connection);

    Handler handler_;
    int socket_ = -1;
    int port_ = 0;
    std::atomic<bool> isStopping_ = false;
    mutable std::mutex lock_;  ///< guards `requests_`
    std::vector<std::string> requests_;
    std::thread thread_;
};

}  // namespace quorvane::testing
