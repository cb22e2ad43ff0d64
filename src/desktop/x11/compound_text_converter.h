#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <optional>

struct _XDisplay;

namespace kivo {

// Converts COMPOUND_TEXT, the encoding old X clients use for non-Latin titles. Only Xlib knows
// how, and its converter needs a display of its own, opened on first use so that clients that
// never meet such a title never pay for a second connection.
class CompoundTextConverter {
public:
    explicit CompoundTextConverter(QByteArray displayName);
    ~CompoundTextConverter();
    CompoundTextConverter(const CompoundTextConverter&) = delete;
    CompoundTextConverter& operator=(const CompoundTextConverter&) = delete;

    std::optional<QString> decode(QByteArrayView bytes);

private:
    bool ensureDisplay();

    QByteArray displayName_;
    _XDisplay* display_ = nullptr;
    unsigned long compoundTextAtom_ = 0;
};

}  // namespace kivo
