// Threads of the library.
#pragma once

#include <functional>
#include <thread>

namespace showbudget
{
// Runs the function on a new thread that takes no signals, because the engine's handlers belong on its own threads. The
// thread is not joinable when it could not be made; the reason was logged.
std::thread StartThread( std::function<void()> function );
} // namespace showbudget
