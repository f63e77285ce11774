// Brings keys, messages, signals and time to the model, and the model to the terminal.
#pragma once

#include "IpodControl/terminal/Connector.h"
#include "IpodControl/terminal/RunView.h"
#include "IpodControl/terminal/Terminal.h"
#include "IpodControl/view/View.h"
#include "IpodControl/view/ViewModel.h"
#include "ServiceUtil/SignalDescriptor.h"

namespace IpodControl::PlayerView {

class ViewLoop {
  public:
    ViewLoop(const ViewOptions& options, Terminal& terminal, SignalDescriptor& signals);

    /// Until the person quits or a signal ends it; the exit status.
    int Run();

  private:
    void Show();
    void SendLines();
    void Wait();
    std::optional<Deadline> NextWake() const;
    void ReadKeys();
    void ReadSignals();
    void ConnectWhenDue();
    void TakeConnection();
    void Lose(const Problem& problem);
    void Leave();

    const ViewOptions& m_options;
    Terminal& m_terminal;
    SignalDescriptor& m_signals;
    ViewModel m_model;
    Connector m_connector;
    Wire m_wire;
    Time m_retry{};
    int m_ending = 0;  ///< the signal that ends it
};

}  // namespace IpodControl::PlayerView
