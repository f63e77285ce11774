#include "ScenarioRunner/Report.h"

#include <json/json.h>

#include <iomanip>
#include <ostream>

#include "IpodControl/Message.h"

namespace ScenarioRunner {

namespace {

double Milliseconds(std::chrono::microseconds time) {
    return static_cast<double>(time.count()) / 1000;
}

class TextReport : public Report {
  public:
    explicit TextReport(std::ostream& out) : m_out(out) { m_out << std::fixed << std::setprecision(1); }

    void Begin(const Scenario& scenario) override { m_out << scenario.file << '\n'; }

    void Tell(const Heading& heading) override {
        m_out << (heading.isTitle ? "== " : "-- ") << heading.text << '\n' << std::flush;
    }

    void Tell(const Step& step, const StepResult& result) override {
        m_out << std::setw(5) << step.line << "  " << (result.isOk ? "ok    " : "FAILED") << std::setw(8)
              << Milliseconds(result.time) << " ms  " << step.text << '\n';
        if (!result.isOk) {
            m_out << "         expected  " << result.expected << "\n         came      " << result.came
                  << '\n';
        }
        m_out << std::flush;
    }

    void End(const Scenario& scenario, const Summary& summary) override {
        m_out << scenario.file << ": " << summary.ok << " steps ok, " << summary.failed << " failed"
              << (summary.isWhole ? "" : ", the rest not taken") << ", " << Milliseconds(summary.time) / 1000
              << " s\n"
              << std::flush;
    }

  private:
    std::ostream& m_out;
};

class JsonReport : public Report {
  public:
    explicit JsonReport(std::ostream& out) : m_out(out) {}

    void Begin(const Scenario& scenario) override { m_file = scenario.file; }
    void Tell(const Heading&) override {}

    void Tell(const Step& step, const StepResult& result) override {
        Json::Value line = Line(result.isOk, result.time);
        line["line"] = Json::UInt64{step.line};
        line["step"] = step.text;
        if (!result.isOk) {
            line["expected"] = result.expected;
            line["came"] = result.came;
        }
        Write(line);
    }

    void End(const Scenario&, const Summary& summary) override {
        Json::Value line = Line(summary.failed == 0 && summary.isWhole, summary.time);
        line["steps"] = Json::UInt64{summary.ok + summary.failed};
        line["failed"] = Json::UInt64{summary.failed};
        line["whole"] = summary.isWhole;
        Write(line);
    }

  private:
    Json::Value Line(bool isOk, std::chrono::microseconds time) const {
        Json::Value line;
        line["file"] = m_file;
        line["ok"] = isOk;
        line["milliseconds"] = Milliseconds(time);
        return line;
    }

    void Write(const Json::Value& line) { m_out << IpodControl::ToLine(line) << '\n' << std::flush; }

    std::ostream& m_out;
    std::string m_file;
};

}  // namespace

std::unique_ptr<Report> MakeTextReport(std::ostream& out) {
    return std::make_unique<TextReport>(out);
}

std::unique_ptr<Report> MakeJsonReport(std::ostream& out) {
    return std::make_unique<JsonReport>(out);
}

}  // namespace ScenarioRunner
