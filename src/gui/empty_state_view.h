#pragma once

#include <QWidget>

namespace kivo {

// What the detail area shows while nothing was tracked in the selected days: where to get help.
class EmptyStateView : public QWidget {
    Q_OBJECT

public:
    explicit EmptyStateView(QWidget* parent = nullptr);
};

}  // namespace kivo
