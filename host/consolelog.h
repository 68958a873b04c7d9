// Brings lines from everywhere into the console.
#pragma once

#include <QObject>
#include <QTimer>

#include <mutex>

#include "consolemodel.h"

// Listens to the base library's logging (any thread) and takes lines from the host. What arrives close together enters
// the model in one step, so that an engine which prints thousands of lines costs a few updates.
class CConsoleLog final : public QObject
{
	Q_OBJECT

public:
	explicit CConsoleLog( CConsoleModel &model, QObject *pParent = nullptr );
	~CConsoleLog() override;

	// Any thread. A text of several lines becomes as many lines; a text that only ends in a line feed is one. What a
	// line has beyond ConsoleLine::LONGEST_TEXT is cut off, with an ellipsis in its place.
	void Add( LoggingSeverity severity, const QString &source, const QString &text );

	// Puts everything that waits into the model now. User-interface thread.
	void Flush();

private:
	void ScheduleFlush();

	CConsoleModel &m_Model;
	QTimer m_FlushTimer;
	std::mutex m_Mutex;
	CNewestLines m_Waiting; // guarded by m_Mutex
};
