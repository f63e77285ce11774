// Who is to be told of something, on whatever thread it happens.
#pragma once

#include <algorithm>
#include <thread>
#include <vector>

#include "ServiceUtil/Mutex.h"

/// A list of listeners, not owned. Once Remove has returned, the listener is not called any more and no call
/// of it is under way on another thread. The list's lock is not held while a listener is called, so a
/// listener may change the list. Any thread.
template <typename Listener>
class ListenerList {
  public:
    /// Appends the listener; one that is in the list already moves to the end.
    void Add(Listener* listener) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        std::erase(m_listeners, listener);
        m_listeners.push_back(listener);
    }

    /// Waits for calls of the listener that are under way on other threads. An unknown one is ignored.
    void Remove(Listener* listener) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        std::erase(m_listeners, listener);
        while (IsCalledElsewhere(listener)) {
            m_callEnded.Wait(m_mutex);
        }
    }

    /// Calls `function(listener)` for every listener, in the list's order; one that is removed meanwhile is
    /// left out.
    template <typename Function>
    void ForEach(Function function) EXCLUDES(m_mutex) {
        for (Listener* listener : Snapshot()) {
            const Call call(*this, listener);
            if (call.IsAllowed()) {
                function(*listener);
            }
        }
    }

    /// Whether any listener is being called, by whatever thread.
    bool IsCalling() const EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        return !m_calls.empty();
    }

  private:
    struct Running {
        const Listener* listener;
        std::thread::id thread;
        bool operator==(const Running&) const = default;
    };

    /// Keeps the listener alive for one call, when it is still in the list.
    class Call {
      public:
        Call(ListenerList& list, const Listener* listener)
            : m_list(list),
              m_running{listener, std::this_thread::get_id()},
              m_isAllowed(list.Begin(m_running)) {}
        ~Call() {
            if (m_isAllowed) {
                m_list.End(m_running);
            }
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

        bool IsAllowed() const { return m_isAllowed; }

      private:
        ListenerList& m_list;
        const Running m_running;
        const bool m_isAllowed;
    };

    std::vector<Listener*> Snapshot() const EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        return m_listeners;
    }

    bool Begin(const Running& running) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        if (std::find(m_listeners.begin(), m_listeners.end(), running.listener) == m_listeners.end()) {
            return false;
        }
        m_calls.push_back(running);
        return true;
    }

    void End(const Running& running) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        m_calls.erase(std::find(m_calls.begin(), m_calls.end(), running));
        m_callEnded.NotifyAll();
    }

    bool IsCalledElsewhere(const Listener* listener) const REQUIRES(m_mutex) {
        return std::any_of(m_calls.begin(), m_calls.end(), [&](const Running& running) {
            return running.listener == listener && running.thread != std::this_thread::get_id();
        });
    }

    mutable Mutex m_mutex;
    Condition m_callEnded;
    std::vector<Listener*> m_listeners GUARDED_BY(m_mutex);
    std::vector<Running> m_calls GUARDED_BY(m_mutex);
};
