// What a user does in an application, one thing per turn of its event loops, and what happens in the middle of it.
#pragma once

#include <QObject>
#include <deque>
#include <functional>

// Runs the application's event loop while the user's steps are made. A step may start a loop of its own (a menu, a
// dialog, a file that is read): the next steps are then made inside that loop, and when none are left, the user closes
// whatever waits for an answer, once per turn.
class CUserLoop final : public QObject
{
public:
	using Step = std::function<void()>;

	// answer closes the popup or dialog that waits.
	explicit CUserLoop( Step answer )
		: m_Answer( std::move( answer ) )
	{
	}

	// Behind the steps that are there. Null: the user waits for a turn.
	void AddStep( Step step ) { m_Steps.push_back( std::move( step ) ); }

	// Ends when all steps have been made and have come back and nothing waits for an answer, or with the application.
	// In turn nTurn (from 0 on) of whatever loop runs then, happens is called. Returns whether that turn came. More
	// than a few hundred turns fail the test: what is not over by then never will be.
	bool Run( int nTurn, const Step &happens );

	bool WasAsked() const { return m_bAsked; } // whether a popup or dialog has waited for the user

private:
	void OnTurn();
	static bool IsAsked();

	Step m_Answer;
	std::deque<Step> m_Steps;
	int m_nRunning = 0; // steps that have not come back
	bool m_bAsked = false;
};
