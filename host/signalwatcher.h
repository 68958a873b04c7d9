// SIGINT and SIGTERM as an event of the user-interface thread.
#pragma once

#include <QObject>
#include <QSocketNotifier>

// One at a time. While it lives the two signals no longer end the process; each emits Stopped instead.
class CSignalWatcher final : public QObject
{
	Q_OBJECT

public:
	explicit CSignalWatcher( QObject *pParent = nullptr );
	~CSignalWatcher() override;

signals:
	void Stopped( int nSignal );

private:
	void OnReadable();

	QSocketNotifier *m_pNotifier = nullptr;
};
