// A process of a test, which tells what it does line by line on its output.
#pragma once

#include <QProcess>
#include <QStringList>

#include <functional>
#include <vector>

// How long tests wait for what a busy machine may take its time for.
constexpr int PROCESS_PATIENCE_MS = 60000;

class CChild
{
public:
	CChild();
	~CChild(); // kills what still runs

	// For the environment of the process, before its start.
	void SetVariable( const QString &name, const QString &value );

	// command[0] is the program.
	void Start( const QStringList &command );

	// Runs the event loop until a line from index nFrom on begins so; -1 when none comes in time, else its index.
	int WaitForLine( const QString &prefix, int nFrom, int nMilliseconds );
	bool WaitForLines( int nCount, int nMilliseconds ); // until that many lines came

	const std::vector<QString> &Lines() const { return m_Lines; }
	int Count() const { return static_cast<int>( m_Lines.size() ); }
	QString Last( const QString &prefix ) const; // what followed the prefix in its newest line; empty without one
	int CountOf( const QString &prefix, int nFrom = 0 ) const;
	qint64 TimeOf( int nLine ) const { return m_Times[static_cast<size_t>( nLine )]; } // when it came, as Now() says it
	static qint64 Now();                                                               // milliseconds
	QString Text() const; // all lines, for the message of a check

	void Write( const QByteArray &text ) { m_Process.write( text ); }
	void Signal( int nSignal ) const;
	bool EndAndWait( int nSignal ); // by that signal; true when it ended in time
	bool CloseInputAndWait();       // true when it then ended with status 0
	qint64 ProcessId() const { return m_Process.processId(); }
	int OpenDescriptors() const;

private:
	void OnOutput();

	QProcess m_Process;
	std::vector<QString> m_Lines;
	std::vector<qint64> m_Times;
};

// Where a test's engine says that it listens ("listening on ADDRESS"): the address; empty when it does not.
QString WaitForAddress( CChild &engine, int nFrom = 0 );
