// Pictures of lines of text in a font of fixed pitch, put together from pictures of single characters. Laying a text
// out and rasterising it costs ten times as much, and captions of numbers are different ones in every repaint.
#pragma once

#include <QFont>
#include <QImage>
#include <QString>
#include <array>
#include <memory>
#include <vector>

class CFixedPitchText
{
public:
	explicit CFixedPitchText( const QFont &font );

	// Whether a text can be put together: printable ASCII only, at most nWidth pixels wide.
	bool Fits( const QString &text, int nWidth ) const;

	struct Line
	{
		QImage m_Image; // premultiplied, as wide as the box; its pixels are valid until the next call
		int m_nTop;     // of the picture, from the box's top
	};

	// The text as QPainter::drawText puts it right-aligned and vertically centred into a box of nWidth x nHeight. It
	// must fit.
	Line Compose( const QString &text, int nWidth, int nHeight, QRgb colour );

private:
	// The rows of a character that have ink, each m_nCellWidth pixels from MARGIN left of its column on.
	struct Cell
	{
		bool m_bMade = false;
		int m_nTop = 0;
		int m_nBottom = 0; // one past the last row; 0 without ink, and m_nTop is then the box's height
		std::vector<QRgb> m_Pixels;
	};

	static constexpr int FIRST = ' ';
	static constexpr int LAST = '~';
	static constexpr int PHASES = 64; // text layout places characters on a grid of 1/64 pixel
	static constexpr int MARGIN = 3;  // pixels that a character may reach out of its column
	static constexpr int CHUNK = 8;   // pixels; cells are a number of chunks wide

	using Cells = std::array<Cell, LAST - FIRST + 1>;

	void Prepare( int nWidth, int nHeight, QRgb colour );
	const Cell &CellOf( char c, int nPhase );
	Cell Render( char c, int nPhase ) const;
	void Put( const Cell &cell, int nColumn );

	QFont m_Font;
	int m_nAdvance; // of every character, in 1/64 pixel
	int m_nCellWidth;
	qreal m_flAscent;
	qreal m_flLineHeight;

	// What the cells were made for.
	int m_nHeight = 0;
	QRgb m_Colour = 0;
	std::array<std::unique_ptr<Cells>, PHASES> m_Cells;

	// The line under construction: MARGIN pixels, the box, and room for a whole cell.
	int m_nStride = 0;
	std::vector<QRgb> m_Pixels;
};
