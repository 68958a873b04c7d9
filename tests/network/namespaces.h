// Two hosts on one machine, as network namespaces with a link between them.
#pragma once

#include <QStringList>

class CTwoHosts
{
public:
	~CTwoHosts(); // takes both away

	// False where the machine does not allow it (no rights, or no command "ip"); Problem() says what failed.
	bool SetUp();
	const QString &Problem() const { return m_Problem; }

	QStringList OnFirst( const QStringList &command ) const { return In( m_First, command ); }
	QStringList OnSecond( const QStringList &command ) const { return In( m_Second, command ); }
	static QString FirstAddress() { return QStringLiteral( "10.77.0.1" ); }

	// Cuts the link, so that nothing arrives and nobody is told, or mends it.
	bool SetLink( bool bUp );

	// The ports from which programs of the first host connect, when they do not care.
	bool SetPortsOfFirst( int nLowest, int nHighest );

private:
	static QStringList In( const QString &name, const QStringList &command );
	bool Run( const QStringList &command );

	QString m_First;
	QString m_Second;
	QString m_Problem;
};
