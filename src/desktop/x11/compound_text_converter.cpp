#include "desktop/x11/compound_text_converter.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace kivo {

namespace {

// Xlib ends the process when its connection breaks unless both handlers return. A lost server
// is reported by the xcb connection and handled there; this display is simply dropped with it.
int ignoreIoError(Display*) {
    return 0;
}
void continueAfterIoError(Display*, void*) {}

}  // namespace

CompoundTextConverter::CompoundTextConverter(QByteArray displayName)
    : displayName_(std::move(displayName)) {}

CompoundTextConverter::~CompoundTextConverter() {
    if (display_ != nullptr) {
        XCloseDisplay(display_);
    }
}

bool CompoundTextConverter::ensureDisplay() {
    if (display_ != nullptr) {
        return true;
    }
    XSetIOErrorHandler(ignoreIoError);
    display_ = XOpenDisplay(displayName_.constData());
    if (display_ == nullptr) {
        return false;
    }
    XSetIOErrorExitHandler(display_, continueAfterIoError, nullptr);
    compoundTextAtom_ = XInternAtom(display_, "COMPOUND_TEXT", False);
    return true;
}

std::optional<QString> CompoundTextConverter::decode(QByteArrayView bytes) {
    if (bytes.isEmpty()) {
        return QString();
    }
    if (!ensureDisplay()) {
        return std::nullopt;
    }
    QByteArray copy = bytes.toByteArray();
    XTextProperty property;
    property.value = reinterpret_cast<unsigned char*>(copy.data());
    property.encoding = compoundTextAtom_;
    property.format = 8;
    property.nitems = static_cast<unsigned long>(copy.size());

    char** list = nullptr;
    int count = 0;
    const int status = Xutf8TextPropertyToTextList(display_, &property, &list, &count);
    std::optional<QString> text;
    if (status >= Success && count > 0) {
        text = QString::fromUtf8(list[0]);
    }
    if (list != nullptr) {
        XFreeStringList(list);
    }
    return text;
}

}  // namespace kivo
