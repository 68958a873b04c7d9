// Lines of text with who said them and when, and as many of the newest as there is room for.
#pragma once

#include <QString>
#include <QTime>

#include <deque>

#include "keel0/logging.h"

struct ConsoleLine
{
	static constexpr int LONGEST_TEXT = 16384; // characters; what is longer is cut before it is kept

	QTime m_Time;
	LoggingSeverity m_Severity = LoggingSeverity::Message;
	QString m_Source; // who said it: an engine's name, or empty for the console itself
	QString m_Text;   // one line, as it came
};

// Bounded in lines and in characters, so that an engine which prints without an end costs a known amount of memory.
class CNewestLines
{
public:
	static constexpr qint64 CHARACTER_LIMIT = 16 << 20; // of all texts together

	explicit CNewestLines( int nLineLimit, qint64 nCharacterLimit = CHARACTER_LIMIT );

	int LineLimit() const { return m_nLineLimit; }
	int Count() const { return static_cast<int>( m_Lines.size() ); }
	const ConsoleLine &At( int nIndex ) const { return m_Lines[static_cast<size_t>( nIndex )]; } // the oldest is 0

	// Adds a line behind the others; the oldest ones go where there is no room.
	void Add( ConsoleLine line );

	// From now on the limits of `other` hold here, too; the oldest lines beyond them go.
	void LimitAs( const CNewestLines &other );

	// How many of the oldest lines would go if all of `newer` were added.
	int CountThatGoFor( const CNewestLines &newer ) const;

	void RemoveOldest( int nCount );

	// All lines of `newer` behind the others. The caller has made room for them.
	void Append( CNewestLines newer );

	void Clear();

private:
	bool IsRoomFor( qint64 nLines, qint64 nCharacters ) const
	{
		return nLines <= m_nLineLimit && nCharacters <= m_nCharacterLimit;
	}
	void RemoveExcess();

	std::deque<ConsoleLine> m_Lines;
	int m_nLineLimit;
	qint64 m_nCharacterLimit;
	qint64 m_nCharacters = 0;
};
