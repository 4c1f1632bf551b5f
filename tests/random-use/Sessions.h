// Random sessions: making them up, playing them, and making a failing one short.
#pragma once

#include "Driver.h"

#include <functional>
#include <random>

namespace random_use {

/// What a session is mostly made of.
enum class Theme { Everything, Commands, Gestures, Interference };

/// Makes up steps. Looks at the model only for how much there is: sessions neither grow without
/// bounds nor run dry.
class Generator {
public:
    Generator(unsigned int seed, Theme theme, const Start& start)
        : m_random(seed), m_theme(theme), m_opensFiles(start.kind > Start::Generated) {}

    Step next(Model& model);

private:
    unsigned int pick(unsigned int below) { return unsigned(m_random() % below); }
    Action pickAction(Model& model);
    Edit pickEdit(Model& model);
    void pickFile(Step& step, Model& model);
    /// What the action is done with.
    void pickDetails(Step& step, Model& model);
    void pickPlaces(Step& step);
    /// Gestures come in rows: what a press began goes on, and a key stays down for a while.
    void goOn(Step& step);
    void pickAnswers(Step& step, Model& model);
    std::string pickText();

    /// Whether it takes a moment to compare all data once more.
    bool isMuch(Model& model) const;

    std::mt19937 m_random;
    Theme m_theme;
    bool m_opensFiles;
    Step m_last;
    Qt::KeyboardModifiers m_held;
};

/// What became of a session.
struct Outcome {
    std::size_t steps = 0; ///< done until it failed
    QStringList faults;    ///< what differed then; empty when all went as expected
    bool crashed = false;  ///< the program ended or hung, which is the only fault then
};

/// What is called before each step.
using Begin = std::function<void(const Step&)>;

/// Plays a session from its start, in an empty data space, until something differs.
Outcome play(const Session& session, const Begin& begin = {});
/// Makes up `count` steps as they are played; `session` then holds them.
Outcome play(Session& session, Theme theme, unsigned int seed, std::size_t count,
             const Begin& begin = {});
/// Leaves out all steps without which the session fails, too; one that crashes then still crashes.
Session shortened(const Session& session);
/// What to say of a session that failed: its faults, and the shortened session as C++ writes it.
QString report(const Session& session, const Outcome& outcome);

} // namespace random_use
