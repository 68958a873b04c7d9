// Repaints as often as a screen shows something new, however often it is asked to.
#pragma once

#include <QTimer>
#include <functional>

// The toolkit coalesces the requests of one turn of the event loop only, and an engine may well have a sample ready in
// each of a thousand turns a second.
class CRepaintPacer
{
public:
	explicit CRepaintPacer( std::function<void()> repaint );
	CRepaintPacer( const CRepaintPacer & ) = delete;
	CRepaintPacer &operator=( const CRepaintPacer & ) = delete;

	// Repaints at once when the last time is a refresh of the screen ago, else when it is. flRefreshRate is the
	// screen's, in hertz; one that makes no sense counts as 60.
	void Request( double flRefreshRate );

private:
	void OnTimeout();

	std::function<void()> m_Repaint;
	QTimer m_Timer; // runs for one refresh after each repaint
	bool m_bRequested = false;
};
