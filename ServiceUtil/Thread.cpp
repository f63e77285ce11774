#include "ServiceUtil/Thread.h"

#include <memory>
#include <utility>

namespace {

using Body = std::function<void()>;

extern "C" void* RunBody(void* body) noexcept {
    (*std::unique_ptr<Body>(static_cast<Body*>(body)))();
    return nullptr;
}

}  // namespace

bool Thread::Start(std::size_t stackBytes, Body body) {
    auto owned = std::make_unique<Body>(std::move(body));
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) {
        return false;
    }
    m_isStarted = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                  pthread_create(&m_thread, &attributes, RunBody, owned.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (m_isStarted) {
        static_cast<void>(owned.release());  // the thread's
    }
    return m_isStarted;
}

void Thread::Join() {
    if (m_isStarted) {
        pthread_join(m_thread, nullptr);
        m_isStarted = false;
    }
}
