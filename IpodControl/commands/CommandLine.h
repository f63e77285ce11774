// From what was typed to the subcommand that is meant.
#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string>
#include <vector>

#include "IpodControl/commands/Commands.h"

namespace IpodControl {

/// Holds the options' values while they are parsed, and what is to be run.
class CommandLine {
  public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Parses and runs. `arguments`: without the program's name. Libraries' exceptions end here.
    int Run(const std::vector<std::string>& arguments);

    const CLI::App& App() const { return m_app; }

  private:
    void AddGlobalOptions();
    void AddMethod(const Method& method);
    void AddParameter(CLI::App& command, const Parameter& parameter, Json::Value& params);
    void AddSpecialCommands();
    void AddBrowse();
    void AddWatch();
    void AddArt();
    void AddWait();
    void AddRaw();
    void AddPlayer();
    int RunPlayer() const;
    void AddHelp();
    int RunHelp() const;
    void AddCompletion();
    CLI::Option& AddText(CLI::App& command, const std::string& name, const std::string& type,
                         const std::string& help, const std::function<void(const std::string&)>& take);
    void AddChoice(CLI::App& command, const std::string& name, const std::string& choices,
                   const std::string& help);
    void AddWords(CLI::App& command, const std::string& name, const std::string& help);
    /// `run` gives back the exit status.
    CLI::App& Add(const std::string& name, const std::string& summary, const std::string& example,
                  std::function<int()> run);

    CLI::App m_app;
    Settings m_settings;
    std::vector<std::unique_ptr<Json::Value>> m_params;  // one a method
    bool m_plays = false;                                // browse
    WatchOptions m_watch;
    ArtOptions m_art;
    bool m_isColourless = false;  // the player view
    std::string m_word;           // of wait, raw, help and completion
    std::vector<std::string> m_words;
    std::function<int()> m_chosen;
};

}  // namespace IpodControl
