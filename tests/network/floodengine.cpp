// An engine with as many budgets as there can be and 2,000 frames a second: two megabytes a second for each console.
// Ends when its input ends.
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <deque>
#include <string>
#include <thread>

#include "target/showbudget.h"

namespace
{
constexpr int BUDGETS = 250;

bool HasInputEnded()
{
	pollfd input = { STDIN_FILENO, POLLIN, 0 };
	char byte = 0;
	return poll( &input, 1, 0 ) > 0 && read( STDIN_FILENO, &byte, 1 ) <= 0;
}
} // namespace

int main()
{
	std::deque<showbudget::CBudget> budgets;
	for ( int i = 0; i < BUDGETS; i++ )
		budgets.emplace_back( ( "Budget " + std::to_string( i ) ).c_str(), static_cast<uint8_t>( i ), 128, 200 );
	showbudget::Settings settings;
	settings.m_pName = "flood";
	settings.m_nPort = 0;
	if ( !showbudget::Start( settings ) )
		return 1;
	std::printf( "listening on 127.0.0.1:%u\n", unsigned{ showbudget::Port() } );
	std::fflush( stdout );
	while ( !HasInputEnded() )
	{
		std::this_thread::sleep_for( std::chrono::microseconds( 500 ) ); // the frame's work
		showbudget::EndFrame();
	}
	showbudget::Stop();
	return 0;
}
