// What is measured of a server over the wire, one round of it.
#pragma once

#include <string>
#include <vector>

#include "bench/wire/Server.h"

namespace Bench {

struct Figure {
    std::string row;  ///< as bench/rows.json has it
    double value;
};
using Figures = std::vector<Figure>;

/// Processor time of a request and the time to its reply, in microseconds, while the client spins.
Figures MeasureRequests(const Server& server);
/// Answers a second with 8 and with 64 connections, each asking again as soon as it is answered.
Figures MeasureThroughput(const Server& server);
/// Connect, one request, close, in microseconds.
Figures MeasureConnect(const Server& server);
/// Until the last of 64 clients, or of one, knows of a change, and the server's processor time for it, in
/// microseconds. A client more asks for the changes, and hears of them as well.
Figures MeasureFanOut(const Server& server);
/// Until a client knows of a change: 16 clients, changes 2 ms apart, in microseconds.
Figures MeasureChanges(const Server& server);

}  // namespace Bench
