// How long a wanted connection waits before it tries again.
#pragma once

#include <algorithm>

// Milliseconds, doubling from attempt to attempt. A lost or absent engine is tried soon and at least every second, so
// that one that was restarted is back within two; a peer that speaks something else is left alone for longer, and one
// that turned the console away for longest.
class CReconnectDelay
{
public:
	static constexpr int FIRST_AFTER_LOSS = 250;
	static constexpr int LONGEST_AFTER_LOSS = 1000;
	static constexpr int FIRST_AFTER_REFUSAL = 5000;
	static constexpr int LONGEST_AFTER_REFUSAL = 30000;

	int AfterLoss() { return Next( m_nAfterLoss, LONGEST_AFTER_LOSS ); }
	int AfterTurnedAway() const { return LONGEST_AFTER_REFUSAL; }
	int AfterRefusal() { return Next( m_nAfterRefusal, LONGEST_AFTER_REFUSAL ); }

	// The connection has proved itself: the next loss begins anew.
	void Reset() { *this = CReconnectDelay(); }

private:
	static int Next( int &nDelay, int nLongest )
	{
		const int nResult = nDelay;
		nDelay = std::min( nDelay * 2, nLongest );
		return nResult;
	}

	int m_nAfterLoss = FIRST_AFTER_LOSS;
	int m_nAfterRefusal = FIRST_AFTER_REFUSAL;
};
