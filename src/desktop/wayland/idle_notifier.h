#pragma once

#include <chrono>
#include <functional>

namespace kivo {

// A desktop that tells when the user has been without input for a set time, and when input comes
// back, rather than keeping a running count of the time since the last input.
class IdleNotifier {
public:
    enum class Change { idled, resumed };
    using Listener = std::function<void(Change)>;

    virtual ~IdleNotifier() = default;

    // Replaces any notification asked for before with one after `timeout` without input, counted
    // from now; its changes reach `listener` as they are read.
    virtual void notifyAfter(std::chrono::milliseconds timeout, Listener listener) = 0;

    // Reads what the desktop has sent since the last call, without waiting. False once the
    // connection has ended.
    virtual bool update() = 0;
};

}  // namespace kivo
