#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QLabel;
class QWidget;
QT_END_NAMESPACE

namespace kivo {

// Pieces shared by the editors' forms.

// The dimmed "(Required)" beside a field that must be filled.
QLabel* requiredMark();
// The warning sign shown beside an expression that does not compile; hidden at first, and it
// keeps its place while hidden so that the form does not jump.
QLabel* warningMark(const QString& accessibleName);
// A section's bold heading in the highlight colour, with an optional dimmed note after it.
QWidget* sectionHeading(const QString& title, const QString& note = {});

}  // namespace kivo
