// The console with its plug-in loaded by file, and what a user sees in the Show Budget window.
#pragma once

#include <QMainWindow>
#include <QTemporaryDir>

#include <cstdint>
#include <functional>
#include <memory>

#include "tesselhost.h"

class QAction;

// Runs the event loop until the condition holds; false when it does not within half a minute.
bool WaitUntil( const std::function<bool()> &condition );

class CLiveConsole
{
public:
	// pSettings is the text of the settings file that the console finds; null for none.
	explicit CLiveConsole( uint16_t nPort, const char *pSettings = nullptr );

	CTesselHost &Host() { return *m_pHost; }

	// The Show Budget window, null while there is none.
	QMainWindow *Window() const;
	QString StatusText( const QString &prefix ) const; // of the status bar label that begins so; empty when none does
	int SampleCount() const;                           // behind "Samples: "; 0 for "No Samples."
	double FrameMilliseconds() const;                  // behind "Frame: "
	QAction *Action( const QString &text ) const;

	void SendCommand( const QString &command ); // to the current target

private:
	QTemporaryDir m_Folder;
	std::unique_ptr<CTesselHost> m_pHost;
};
