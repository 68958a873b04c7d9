// The demo engine as a child of the console.
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTimer>

#include "keel0/logging.h"
#include "targetaddress.h"

// The child is asked to listen on any free port and says on its output where. It ends with the console, however the
// console ends.
class CDemoProcess final : public QObject
{
	Q_OBJECT

public:
	static constexpr int START_PATIENCE_MS = 10000;

	// The engine that is built beside the program.
	static QString DefaultProgram();

	explicit CDemoProcess( const QString &program, QObject *pParent = nullptr );
	~CDemoProcess() override; // ends the child

	// The child shall take its token from that file and not from the environment.
	void UseTokenFile( const QString &path );

	void Start( const QStringList &arguments = { QStringLiteral( "--port" ), QStringLiteral( "0" ) } );
	qint64 ProcessId() const { return m_Process.processId(); } // 0 when it does not run

signals:
	void Listening( const TargetAddress &address );
	void Printed( LoggingSeverity severity, const QString &line ); // everything else that it writes
	void Failed( const QString &reason ); // it did not start, did not listen, or ended; one line

private:
	class CChild final : public QProcess
	{
	protected:
		void setupChildProcess() override;
	};

	void ReadLines( QProcess::ProcessChannel channel );
	void OnLine( const QString &line );
	void OnFinished();
	void OnError( QProcess::ProcessError error );

	QString m_Program;
	CChild m_Process;
	QTimer m_Patience;
	bool m_bListening = false;
};
