// What is measured of a server over the wire, one round of it.
#pragma once

#include <string>
#include <vector>

#include "bench/wire/Server.h"

namespace Bench {

struct Figure {
    std::string row;  ///< as bench/rows.json has it, and in the unit that stands there
    double value;
};
using Figures = std::vector<Figure>;

// Of a server that runs, with a player, and has nothing else to do.

/// Processor time of a request and the time to its reply, while the client spins.
Figures MeasureRequests(const Server& server);
/// Answers a second with 8 and with 64 connections, each asking again as soon as it is answered.
Figures MeasureThroughput(const Server& server);
/// Connect, one request, close.
Figures MeasureConnect(const Server& server);
/// Until the last of 64 clients, or of one, knows of a change, and the server's processor time for it. A
/// client more asks for the changes, and hears of them as well.
Figures MeasureFanOut(const Server& server);
/// Until a client knows of a change: 16 clients, changes 2 ms apart.
Figures MeasureChanges(const Server& server);
/// The worst round trip beside clients that take 1 kB/s of a picture of 2.8 MB each.
Figures MeasureBesideSlowReaders(const Server& server);

// Of runs of their own, at an address where no other run is.

inline constexpr unsigned kOwnRun = 100;

/// As MeasureFanOut, with a player that reports from a thread of its own.
Figures MeasureFanOutFromThread(const Program& program);
/// From a player's event to its notification.
Figures MeasureEvents(const Program& program);
/// From the start to the first reply.
Figures MeasureStart(const Program& program);
/// From the signal to the end.
Figures MeasureStop(const Program& program);
/// Memory, libraries and threads at rest, without a player.
Figures MeasureFootprint(const Program& program);
/// How often a second a thread of the service goes to sleep, at rest.
Figures MeasureWakeups(const Program& program);

}  // namespace Bench
