// What a user does with a Show Budget window that takes more than one turn of an event loop.
#pragma once

#include <span>

class CToolScene;
class CUserLoop;

struct Scenario
{
	const char *m_pName;

	// Before the first turn: what the window shows. May be null.
	void ( *m_pPrepare )( CToolScene &scene );

	// The user's steps. A step does nothing when the window has gone by then.
	void ( *m_pAddSteps )( CToolScene &scene, CUserLoop &loop );

	// What the user gets when nothing else happens.
	void ( *m_pCheck )( const CToolScene &scene, const CUserLoop &loop );
};

std::span<const Scenario> Scenarios();
