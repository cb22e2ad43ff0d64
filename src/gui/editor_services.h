#pragma once

namespace kivo {

class ApplicationCatalog;
class Clock;
class ProjectTreeViewModel;
class RecordStore;

// What the project and filter editors work with; the main window owns all of it.
struct EditorServices {
    RecordStore& store;
    ProjectTreeViewModel& tree;
    const ApplicationCatalog& catalog;
    const Clock& clock;
};

}  // namespace kivo
