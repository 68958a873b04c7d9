// The keys that move the history cursor.
#pragma once

#include <QString>
#include <Qt>
#include <optional>

struct HistoryCommand
{
	enum class Kind
	{
		Step,       // m_nSteps samples later (below 0: earlier)
		StepScreen, // m_nSteps screens later
		Oldest,
		Newest,
		NextSlow, // slower than the lower marker
		PreviousSlow,
		Slowest,
		ToggleSampling // the only one that also works while sampling runs
	};

	Kind m_Kind;
	int m_nSteps = 0;

	friend bool operator==( const HistoryCommand &, const HistoryCommand & ) = default;
};

std::optional<HistoryCommand> HistoryCommandOfKey( int nKey, Qt::KeyboardModifiers modifiers );

// The keys for a tool tip, one per line.
QString HistoryKeysText();
