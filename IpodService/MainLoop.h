// The process's GLib main loop.
#pragma once

#include <glib.h>

/// At most one at a time. Main thread, but for Quit.
class MainLoop {
  public:
    /// From here on Quit finds the loop.
    MainLoop();
    ~MainLoop();
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    /// Returns once Quit has been called, also when that was before.
    void Run();

    /// Makes the loop return; does nothing while there is none. Any thread, but not a signal handler.
    static void Quit();

  private:
    GMainLoop* m_loop;
};
