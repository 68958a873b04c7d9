// The command lines that were sent, for the up and down keys.
#pragma once

#include <QString>
#include <QStringList>

class CCommandHistory
{
public:
	static constexpr int LIMIT = 200;

	// Remembers a command (not twice in a row) and leaves browsing.
	void Add( const QString &command );

	// One step towards older or newer commands. draft is what stands in the line now; it comes back when the steps lead
	// past the newest command. At the oldest command Older stays there.
	QString Older( const QString &draft );
	QString Newer( const QString &draft );

	const QStringList &Commands() const { return m_Commands; } // oldest first

private:
	QStringList m_Commands;
	QString m_Draft;
	int m_nStepsBack = 0; // 0: the draft
};
