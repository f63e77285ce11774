#include "IpodService/MainLoop.h"

#include <atomic>

namespace {

std::atomic<GMainLoop*> g_mainLoop{nullptr};

gboolean QuitLoop(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

void UnrefLoop(gpointer loop) {
    g_main_loop_unref(static_cast<GMainLoop*>(loop));
}

}  // namespace

MainLoop::MainLoop() : m_loop(g_main_loop_new(nullptr, FALSE)) {
    g_mainLoop = m_loop;
}

MainLoop::~MainLoop() {
    g_main_loop_unref(m_loop);
    g_mainLoop = nullptr;
}

void MainLoop::Run() {
    g_main_loop_run(m_loop);
}

void MainLoop::Quit() {
    GMainLoop* loop = g_mainLoop;
    if (loop == nullptr) {
        return;
    }
    // A quit before the loop runs would be lost; a source waits for it.
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_HIGH);
    g_source_set_callback(source, QuitLoop, g_main_loop_ref(loop), UnrefLoop);
    g_source_attach(source, nullptr);
    g_source_unref(source);
}
