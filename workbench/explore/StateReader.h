#pragma once

#include "simulator/Simulation.h"
#include "views/ViewNode.h"
#include "workbench/explore/StateHash.h"
#include "workbench/explore/StateWriter.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace qoro
{

class CloseGuard;
class ControlWatch;
class LineLimit;
class MessageBudget;
class Mraid;
class QoroPhoneGapViewController;
class QoroVideoWebViewController;

/// Reads a state part by part. Has access to the private members of the classes that keep a part of it.
class StateReader
{
public:
    StateReader(Simulation& simulation, StateWriter& out, StateDetail detail);

    /// @return whether all of the state could be read
    bool read();

private:
    void time_counts() { out_.add("time", platform_.loop().now_microseconds()); }

    // StateEngines.cpp
    void find_engines();
    void engines();
    void player(const SimulatedPlayer& player);
    void page(const SimulatedWebEngine& page);
    /// Place among those alive; their serial numbers only count how many there have been.
    template <typename Engine, typename List>
    static std::ptrdiff_t place(const Engine* engine, const List& alive)
    {
        return engine ? std::ranges::find(alive, engine) - alive.begin() : -1;
    }

    // StateViews.cpp
    void windows();
    /// A view: its number, and its state when it is met for the first time.
    void view(std::string_view name, const ViewNode* node);
    /// Left out: serial and revision, which the trace does not show.
    void node_state(const ViewNode& node);
    void action(std::string_view name, const Action& action);
    /// A screen, whose views are in the tree.
    void screen(std::string_view name, const UIViewController* screen);
    template <typename Object>
    static std::string_view type_name(const Object* object)
    {
        return object ? typeid(*object).name() : "none";
    }

    // StateController.cpp
    void controller();
    void superclass(const QoroPhoneGapViewController& super);

    // StateKit.cpp
    void collaborators();
    /// A budget that is full again has forgotten when it was used.
    void budget(std::string_view name, const MessageBudget& budget);
    void limit(std::string_view name, const LineLimit& limit);
    void mraid(const Mraid& mraid);
    void control_watch(const ControlWatch& watch);
    void guard(const CloseGuard& guard);

    // StateQueue.cpp
    void queue();
    /// Which of the queue's timers the field refers to; the controller stops a timer by its field.
    void timer_field(std::string_view name, const NSTimer& timer);
    /// @return false for work without effect: of an engine that is gone, or of a load that another has replaced
    bool work(const VirtualLoop::Queued& queued);

    // StateHash.cpp
    void picture();
    void observers();
    std::string_view poster(const void* object) const;
    void device();

    Simulation& simulation_;
    SimulatedPlatform& platform_;
    StateWriter& out_;
    const StateDetail detail_;
    const bool whole_;
    const std::shared_ptr<QoroVideoWebViewController> ad_;
    bool known_ = true;
    std::vector<const SimulatedPlayer*> players_;
    std::vector<const SimulatedWebEngine*> pages_;
    std::map<const ViewNode*, std::size_t> numbers_;
    /// The kit's own timers, by their identity in the loop.
    std::map<TimerId, std::string_view> timers_;
};

} // namespace qoro
