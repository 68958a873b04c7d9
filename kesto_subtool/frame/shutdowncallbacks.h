// What the module does last.
#pragma once

#include <functional>
#include <vector>

class CShutdownCallbacks
{
public:
	void Add( std::function<void()> callback );

	// Runs all callbacks, the newest first. Each is off the list before the next one runs, so one that is added by a
	// callback runs too and none runs twice.
	void Run();

private:
	std::vector<std::function<void()>> m_Callbacks;
};
