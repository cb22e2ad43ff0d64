#include "cli/report_contents.h"

#include "cli/report_arguments.h"
#include "model/instant.h"
#include "model/local_day.h"
#include "reports/productivity_score.h"
#include "tree/project_tree_view_model.h"

namespace kivo {

ReportContents collectReport(RecordStore& store, ApplicationSettings& settings, const Clock& clock,
                             const ReportArguments& arguments) {
    const QDate today = localDateOf(clock.now());
    ProjectTreeViewModel tree(store, settings, clock);
    tree.loadSavedTree();
    const auto treeGroups = tree.recomputeTreeDurations(arguments.from, arguments.to);

    ReportContents contents;
    contents.from = arguments.from;
    contents.to = arguments.to;
    contents.today = today;
    contents.days = arguments.days;
    contents.tree = {tree.roots().front(), tree.durationTotal(), tree.isShowArchivedProject(),
                     tree.projects(), tree.enableFilters()};
    const ReportSelection selection = tree.reportSelection();
    contents.applications =
        computeApplicationReport(store, selection, arguments.from, arguments.to);
    contents.websites = computeWebsiteReport(store, selection, arguments.from, arguments.to);
    contents.tags = computeFilterReportFromTree(treeGroups, selection);
    contents.projects = computeProjectReportFromTree(treeGroups, selection);

    const auto productivity = productivityInputs(store, selection);
    const auto scores = productivityOfDays(store, productivity, arguments.from, arguments.to);
    for (std::size_t i = 0; i < scores.size(); ++i) {
        contents.dayScores.push_back(
            {arguments.from.addDays(static_cast<qint64>(i)), scores[i].score, scores[i].duration});
    }
    contents.productivityBars = productivityBars(store, productivity, today, arguments.days);
    contents.projectBars = computeProjectBarChart(store, selection, today, arguments.days);
    return contents;
}

}  // namespace kivo
