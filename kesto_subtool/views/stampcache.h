// Small pictures of things that look the same in every repaint: names, labels, markers, dashes.
#pragma once

#include <QCache>
#include <QFont>
#include <QImage>
#include <QPoint>
#include <QString>
#include <QVector>
#include <cstdint>
#include <memory>
#include <vector>

#include "views/fixedpitchtext.h"

struct Stamp
{
	QImage m_Image;  // premultiplied, transparent where nothing is drawn
	QPoint m_Offset; // from the place that it is stamped at to the picture's corner
	int m_nExtent;   // texts: the width that the text takes
};

// What tells one picture from another.
struct StampKey
{
	enum class Kind : uint8_t
	{
		Text,
		Polygon,
		Polyline,
		Line,
		Pattern
	};

	Kind m_Kind;
	int m_nVariant = 0; // texts: font, alignment and phase; lines and patterns: style
	int m_nWidth = 0;
	int m_nHeight = 0;
	QRgb m_Pen = 0;
	int m_nPenStyle = 0;
	QRgb m_Brush = 0;
	QString m_Text{};
	QVector<QPoint> m_Points{}; // relative to the first

	friend bool operator==( const StampKey &, const StampKey & ) = default;
};

uint qHash( const StampKey &key, uint nSeed = 0 ) noexcept;

// Keeps what was used last, up to its limit: enough for the names of 64 budgets, which stay, and for the texts of a few
// seconds, which pass. One per widget: what it holds depends on the fonts and colours of one window only.
class CStampCache
{
public:
	static constexpr int LIMIT = 2 << 20; // bytes
	int Size() const { return m_Stamps.totalCost(); }

	const Stamp *Find( const StampKey &key ) const { return m_Stamps.object( key ); }

	// Takes the picture over; null when it is too large to keep. Valid until the next insertion.
	const Stamp *Insert( const StampKey &key, Stamp stamp );

	// A small number for a font: the same for equal fonts.
	int FontIndex( const QFont &font );

	// Null when the font's characters do not all have the same width.
	CFixedPitchText *FixedPitch( int nFontIndex )
	{
		return m_Fonts[static_cast<size_t>( nFontIndex )].m_pFixedPitch.get();
	}

private:
	struct FontEntry
	{
		QFont m_Font;
		std::unique_ptr<CFixedPitchText> m_pFixedPitch;
	};

	QCache<StampKey, Stamp> m_Stamps{ LIMIT };
	std::vector<FontEntry> m_Fonts;
};
