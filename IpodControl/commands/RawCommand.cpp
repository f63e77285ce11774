// Sends text as it stands.

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "IpodControl/Wire.h"
#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/Output.h"

namespace IpodControl {

namespace {

constexpr std::size_t kLongestLine = 2U << 20;

/// Of an answer, or of any in an array.
bool HasError(const Json::Value& answer) {
    return answer.isArray() ? std::any_of(answer.begin(), answer.end(), HasError) : answer.isMember("error");
}

/// Sends what comes in and prints the answers, until the service has answered all of it and closes.
class Exchange {
  public:
    explicit Exchange(const Settings& settings) : m_settings(settings) {}

    int Run(const std::string& text) {
        const auto opened = m_wire.Open(m_settings.endpoint, In(m_settings.Timeout()));
        if (!opened) {
            return Complain(opened.Why());
        }
        if (text == "-") {
            m_input = STDIN_FILENO;
        } else if (!Send(text) || !EndInput()) {
            return m_status;
        }
        m_end = In(m_settings.Timeout());
        while (Step()) {
        }
        return m_status;
    }

  private:
    bool Fail(const Problem& problem) {
        m_status = Complain(problem);
        return false;
    }

    bool Send(std::string_view text) {
        m_hasSent = m_hasSent || text.find_first_not_of(" \t\r\n") != std::string_view::npos;
        const auto sent = m_wire.Send(text);
        return sent ? true : Fail(sent.Why());
    }

    bool EndInput() {
        m_input = -1;
        if (!m_line.empty() && !Send(std::exchange(m_line, {}))) {
            return false;
        }
        const auto sent = m_wire.EndSending();
        return sent ? true : Fail(sent.Why());
    }

    /// False at the end.
    bool Step() {
        // While the input goes on, nothing is overdue. It waits for what was sent, so that it is not
        // collected here.
        const auto deadline = m_input < 0 ? std::optional(m_end) : std::nullopt;
        pollfd input{m_wire.HasUnsent() ? -1 : m_input, POLLIN, 0};
        const auto messages = m_wire.Wait(deadline, {&input, 1});
        if (!messages) {
            const bool isOver = messages.Why().kind == ProblemKind::Closed && m_input < 0;
            return isOver && (m_hasAnswer || !m_hasSent) ? false : Fail(messages.Why());
        }
        if (deadline && std::chrono::steady_clock::now() >= *deadline) {
            return Fail({ProblemKind::TimedOut, ToText(m_settings.endpoint) + " has not answered in time"});
        }
        return Print(*messages) && (input.revents == 0 || TakeInput());
    }

    bool TakeInput() {
        std::array<char, 64U << 10> bytes;
        const ssize_t count = read(m_input, bytes.data(), bytes.size());
        m_end = In(m_settings.Timeout());
        if (count <= 0) {
            return errno == EINTR && count < 0 ? true : EndInput();
        }
        // The wire ends what it sends with a line end: only whole lines go.
        m_line.append(bytes.data(), static_cast<std::size_t>(count));
        const std::size_t end = m_line.rfind('\n');
        if (end == std::string::npos) {
            return m_line.size() <= kLongestLine || RefuseLine();
        }
        const std::string lines = m_line.substr(0, end);
        m_line.erase(0, end + 1);
        return Send(lines);
    }

    bool RefuseLine() {
        Complain("a line of more than 2 MiB is more than the service takes.");
        m_status = kUsage;
        return false;
    }

    bool Print(const std::vector<Message>& messages) {
        for (const Message& message : messages) {
            if (!message.IsNotification()) {
                m_hasAnswer = true;
                m_end = In(m_settings.Timeout());
                m_status = HasError(message.Whole()) ? kRefused : m_status;
                PrintJson(message.Whole());
            }
        }
        return messages.empty() || FlushOutput();
    }

    const Settings& m_settings;
    Wire m_wire;
    int m_input = -1;
    std::string m_line;  // of the input, not ended yet
    Deadline m_end;
    bool m_hasSent = false;
    bool m_hasAnswer = false;
    int m_status = kDone;
};

}  // namespace

int RunRaw(const Settings& settings, const std::string& text) {
    return Exchange(settings).Run(text);
}

}  // namespace IpodControl
