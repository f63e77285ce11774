// Brings keys, messages, signals and time to the model, and the model to the terminal.
#pragma once

#include <poll.h>

#include <array>
#include <memory>

#include "IpodControl/player/Connector.h"
#include "IpodControl/player/Model.h"
#include "IpodControl/player/Player.h"
#include "IpodControl/player/Signals.h"
#include "IpodControl/player/Terminal.h"
#include "IpodControl/player/View.h"

namespace IpodControl::PlayerView {

class Controller {
  public:
    Controller(const PlayerOptions& options, Terminal& terminal, const Signals& signals);

    /// Until the person quits or a signal ends it; the exit status.
    int Run();

  private:
    void Show();
    void SendLines();
    void Wait();
    int PollTime() const;
    void ReadKeys();
    void ReadSignals();
    void ReadMessages();
    void ConnectWhenDue();
    void TakeConnection();
    void Lose(const Problem& problem);

    const PlayerOptions& m_options;
    Terminal& m_terminal;
    const Signals& m_signals;
    Model m_model;
    Connector m_connector;
    std::unique_ptr<Wire> m_wire;  ///< null while there is no connection
    Time m_retry{};
    int m_ending = 0;  ///< the signal that ends it
};

}  // namespace IpodControl::PlayerView
