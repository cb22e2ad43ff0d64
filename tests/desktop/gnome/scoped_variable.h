#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace kivo::test {

// Sets an environment variable for the life of the object.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const QByteArray& value)
        : name_(name), wasSet_(qEnvironmentVariableIsSet(name)), previous_(qgetenv(name)) {
        qputenv(name, value);
    }
    ~ScopedVariable() {
        if (wasSet_) {
            qputenv(name_, previous_);
        } else {
            qunsetenv(name_);
        }
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* name_;
    bool wasSet_;
    QByteArray previous_;
};

}  // namespace kivo::test
