#include "platform/QoroCountDownView.h"

#include "views/ViewNode.h"

namespace qoro
{

QoroCountDownView QoroCountDownView::initWithFrame(const CGRect& frame, double withSecond, double boardWidth)
{
    auto node = std::make_shared<ViewNode>(ViewNode::Kind::CountDown);
    node->seconds_full = withSecond;
    node->seconds = withSecond;
    node->ring_width = boardWidth;
    const QoroCountDownView view(std::move(node));
    view.setFrame(frame);
    return view;
}

void QoroCountDownView::updateWithSeconds(double seconds) const
{
    if (!node_ || node_->seconds == seconds)
        return;
    node_->seconds = seconds;
    node_->changed();
}

double QoroCountDownView::seconds() const
{
    return node_ ? node_->seconds : 0;
}

} // namespace qoro
