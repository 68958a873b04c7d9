// What may happen while a user is at something in a Show Budget window.
#pragma once

#include <span>

class CToolScene;
class CUserLoop;
struct Scenario;

struct Action
{
	const char *m_pName;

	// What runs events is added to the loop's steps instead of being done at once.
	void ( *m_pAct )( CToolScene &scene, CUserLoop &loop, const Scenario &scenario );
};

std::span<const Action> Actions();
