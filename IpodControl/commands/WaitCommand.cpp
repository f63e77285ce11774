// Waits for a state of the player, for scripts.

#include <algorithm>
#include <thread>

#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"

namespace IpodControl {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kUsualWait{30'000};
/// An answer that takes longer than this is none: the service is busy, and is asked again.
constexpr milliseconds kAnswerTime{2000};
/// Between two looks; a notification shortens it.
constexpr milliseconds kPause{250};

/// The answer to a question of the table that is answered with yes or no.
Outcome<bool> IsTrue(Client& client, const char* method) {
    const auto reply = client.Call(method);
    if (!reply) {
        return reply.Why();
    }
    const Answer answer = Weigh(*FindMethod(method), {}, *reply);
    if (answer.status == kNoService) {
        return Problem{ProblemKind::NotTheService,
                       std::string(method) + ": the answer is none that the service gives"};
    }
    return answer.status == kDone;
}

/// What the notification says that follows getCurrentTrackInfo; null where it stays away.
Outcome<Json::Value> CurrentTrack(Client& client, Deadline deadline) {
    const auto reply = client.Call("getCurrentTrackInfo");
    if (!reply) {
        return reply.Why();
    }
    // One from before tells of the past.
    client.DropNotifications();
    const auto notification = client.AwaitNotification("trackInfoNotification", deadline);
    if (!notification) {
        return notification.Why();
    }
    return *notification ? Member((*notification)->Params(), "trackInfo") : Json::Value();
}

/// Whether `state` holds now.
Outcome<bool> Holds(Client& client, const std::string& state, Deadline deadline) {
    const auto isConnected = IsTrue(client, "isIpodConnected");
    if (!isConnected || state == "connected") {
        return isConnected;
    }
    if (state == "disconnected" || !*isConnected) {
        return state == "disconnected" && !*isConnected;
    }
    if (state == "ready") {
        return IsTrue(client, "getHasPlayableData");
    }
    const auto isPaused = IsTrue(client, "isTrackPaused");
    if (!isPaused || state == "paused") {
        return isPaused;
    }
    const auto track = CurrentTrack(client, std::min(deadline, In(std::chrono::seconds(1))));
    if (!track) {
        return track.Why();
    }
    if (state == "track") {
        return !TextMember(*track, "trackTitle").empty();
    }
    const bool isPlaying = IsTrueMember(*track, "isPlaying");
    return state == "playing" ? isPlaying : track->isObject() && !isPlaying && !*isPaused;
}

/// Until something has happened that may have changed the state, or a while has passed.
Outcome<Done> Pause(Client& client, Deadline deadline) {
    const Deadline end = std::min(deadline, In(kPause));
    for (;;) {
        const auto notification = client.NextNotification(end);
        if (!notification) {
            return notification.Why();
        }
        const bool isOver = !*notification || std::chrono::steady_clock::now() >= end;
        // The one about the track is also the echo of this program's own question.
        if (isOver || (*notification)->Method() == "trackPausedNotification" ||
            (*notification)->Method() == "ipodConnectionNotification") {
            return Done{};
        }
    }
}

}  // namespace

int RunWait(const Settings& settings, const std::string& state) {
    const milliseconds time = settings.givenTimeout.value_or(kUsualWait);
    const Deadline deadline = In(time);
    Client client(settings.endpoint, std::min(time, kAnswerTime));
    for (;;) {
        const auto holds = Holds(client, state, deadline);
        if (holds && *holds) {
            return kDone;
        }
        const bool isOver = std::chrono::steady_clock::now() >= deadline;
        if (!holds && (isOver || holds.Why().kind == ProblemKind::NotTheService)) {
            return Complain(holds.Why());
        }
        if (isOver) {
            Complain("the time is over, and \"" + state + "\" does not hold.");
            return kRefused;
        }
        if (!holds || !Pause(client, deadline)) {
            std::this_thread::sleep_until(std::min(deadline, In(kPause)));
        }
    }
}

}  // namespace IpodControl
