#include "desktop/wlroots/sway_ipc.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

// A sway tree: an output with a workspace holding a tiled foot and a floating XWayland window.
QByteArray tree(const char* focusedFoot, const char* focusedFloating) {
    return QByteArray(R"({"type":"root","focused":false,"nodes":[{"type":"output","nodes":[
        {"type":"workspace","focused":false,"nodes":[
          {"type":"con","app_id":"foot","pid":4242,"focused":)") +
           focusedFoot + R"(,"nodes":[],"floating_nodes":[]}],
         "floating_nodes":[{"type":"floating_con","app_id":null,"pid":77,"focused":)" +
           focusedFloating + R"(,"window_properties":{"class":"XTerm"}}]}]}]})";
}

TEST(SwayIpcTest, ProcessOfTheFocusedNodeOnlyWhenItIsTheWindowAskedAbout) {
    EXPECT_EQ(focusedProcessIdInTree(tree("true", "false"), QStringLiteral("foot")), 4242);
    EXPECT_FALSE(focusedProcessIdInTree(tree("true", "false"), QStringLiteral("firefox")));
    EXPECT_EQ(focusedProcessIdInTree(tree("false", "true"), QStringLiteral("XTerm")), 77)
        << "an XWayland window goes by its class";
    EXPECT_FALSE(focusedProcessIdInTree(tree("false", "true"), QStringLiteral("foot")));
    EXPECT_FALSE(focusedProcessIdInTree(tree("false", "false"), QStringLiteral("foot")));
    EXPECT_FALSE(focusedProcessIdInTree("{not json", QStringLiteral("foot")));
    EXPECT_FALSE(focusedProcessIdInTree(R"({"focused":true,"app_id":"foot","pid":0})",
                                        QStringLiteral("foot")));
    EXPECT_FALSE(swayFocusedProcessId("/nonexistent/sway-ipc.sock", QStringLiteral("foot")));
}

}  // namespace
}  // namespace kivo
