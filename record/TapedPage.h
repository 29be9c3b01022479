#pragma once

#include "platform/Decorators.h"
#include "record/Tape.h"

#include <memory>

namespace qoro
{

/// Creates web engines past a tape.
class TapedPages final : public WebEngineFactory
{
public:
    /// @param real null on a replay
    TapedPages(Tape& tape, WebEngineFactory* real) : tape_(tape), real_(real) {}
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) override;

private:
    Tape& tape_;
    WebEngineFactory* const real_;
};

} // namespace qoro
