// Who is to be told of something, on whatever thread it happens.
#pragma once

#include <algorithm>
#include <iterator>
#include <thread>
#include <vector>

#include "ServiceUtil/Mutex.h"

/// A list of listeners, not owned. Once Remove has returned, the listener is not called any more and no call
/// of it is under way on another thread. The list's lock is not held while a listener is called, so a
/// listener may change the list. Any thread. A list whose listeners may call exit() is never destroyed: their
/// calls never end.
template <typename Listener>
class ListenerList {
  public:
    /// Appends the listener; one that is in the list already moves to the end.
    void Add(Listener* listener) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        if (!m_isClosed) {
            std::erase(m_listeners, listener);
            m_listeners.push_back(listener);
        }
    }

    /// Waits for calls of the listener that are under way on other threads, but not for one that removes the
    /// listener as well: a listener may remove itself from inside its call. Two listeners must not remove
    /// each other. An unknown one is ignored.
    void Remove(Listener* listener) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        std::erase(m_listeners, listener);
        MarkOwnCalls(listener);
        while (IsCalledElsewhere(listener)) {
            m_callsChanged.Wait(m_mutex);
        }
    }

    /// Empties the list for good: no call begins from here on, and Add does nothing. Waits for nothing.
    /// Returns whether a call of any listener is under way.
    bool Close() EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        m_isClosed = true;
        m_listeners.clear();
        return !m_calls.empty();
    }

    /// Calls `function(listener)` for every listener, in the list's order; one that is removed meanwhile is
    /// left out. Calls on two threads may overlap.
    template <typename Function>
    void ForEach(Function function) EXCLUDES(m_mutex) {
        for (Listener* listener : Snapshot()) {
            const Call call(*this, listener);
            if (call.IsAllowed()) {
                function(*listener);
            }
        }
    }

  private:
    struct Running {
        const Listener* listener;
        std::thread::id thread;
        bool isRemoving;  ///< its thread has called Remove for the listener: nobody else waits for it
    };

    /// Keeps the listener alive for one call, when it is still in the list.
    class Call {
      public:
        Call(ListenerList& list, const Listener* listener)
            : m_list(list), m_listener(listener), m_isAllowed(list.Begin(listener)) {}
        ~Call() {
            if (m_isAllowed) {
                m_list.End(m_listener);
            }
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

        bool IsAllowed() const { return m_isAllowed; }

      private:
        ListenerList& m_list;
        const Listener* const m_listener;
        const bool m_isAllowed;
    };

    std::vector<Listener*> Snapshot() const EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        return m_listeners;
    }

    bool Begin(const Listener* listener) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        if (std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end()) {
            return false;
        }
        m_calls.push_back({listener, std::this_thread::get_id(), false});
        return true;
    }

    /// Of calls within calls the inner one ends first.
    void End(const Listener* listener) EXCLUDES(m_mutex) {
        const MutexLock lock(m_mutex);
        const auto last = std::find_if(m_calls.rbegin(), m_calls.rend(),
                                       [&](const Running& call) { return IsOwn(call, listener); });
        m_calls.erase(std::next(last).base());
        m_callsChanged.NotifyAll();
    }

    void MarkOwnCalls(const Listener* listener) REQUIRES(m_mutex) {
        for (Running& call : m_calls) {
            call.isRemoving |= IsOwn(call, listener);
        }
        m_callsChanged.NotifyAll();
    }

    bool IsCalledElsewhere(const Listener* listener) const REQUIRES(m_mutex) {
        return std::any_of(m_calls.begin(), m_calls.end(), [&](const Running& call) {
            return call.listener == listener && !call.isRemoving && call.thread != std::this_thread::get_id();
        });
    }

    static bool IsOwn(const Running& call, const Listener* listener) {
        return call.listener == listener && call.thread == std::this_thread::get_id();
    }

    mutable Mutex m_mutex;
    Condition m_callsChanged;
    std::vector<Listener*> m_listeners GUARDED_BY(m_mutex);
    std::vector<Running> m_calls GUARDED_BY(m_mutex);
    bool m_isClosed GUARDED_BY(m_mutex) = false;
};
