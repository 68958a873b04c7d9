// What the user asked for when starting the program.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

#include "style.h"
#include "targetaddress.h"

enum class ScreenshotSubject
{
	Budget,
	Console,
	MiniProfiler, // the Show Budget window's panel of scopes
	Player        // the window of the last recording
};

struct CommandLineOptions
{
	static constexpr int SLOWEST_FRAME = -1; // instead of a number

	std::vector<TargetAddress> m_Connect;
	QStringList m_Open; // titles of sub-tools
	bool m_bDemo = false;
	QStringList m_Recordings;         // absolute paths of files that were there; each gets a window
	std::optional<int> m_Frame;       // of the recordings, the one to show first
	QString m_ScreenshotFile;         // empty: none is wanted
	double m_flScreenshotAfter = 3.0; // seconds from when the connection is up
	ScreenshotSubject m_ScreenshotSubject = ScreenshotSubject::Budget;
	QSize m_ScreenshotSize{ 1280, 860 }; // of the window, in pixels at scale 1
	QString m_SettingsFile;              // empty: the one in the user's configuration folder
	QString m_TokenFile;                 // absolute; empty: the environment decides
	QStringList m_Plugins;
	std::optional<StyleChoice> m_Style;

	// No options: where the program looks for its parts. Empty: beside itself.
	QString m_PluginFolder;
	QString m_DemoProgram;

	// The sub-tools to open once the first connection is up, those that --demo and --screenshot imply included.
	QStringList SubToolsToOpen() const;

	bool ShowsEngine() const; // whether the subject of a picture needs one

	// The title of the sub-tool that shows recordings.
	static QString RecordingSubTool();
};

struct CommandLineResult
{
	enum class Kind
	{
		Run,   // m_Options
		Print, // m_Text goes to the output, status 0
		Wrong  // m_Text (one line) goes to the error output, status 2
	};
	Kind m_Kind = Kind::Run;
	QString m_Text;
	CommandLineOptions m_Options;
};

// arguments[0] is the program. Needs no application object.
CommandLineResult ParseCommandLine( const QStringList &arguments );
