#include "miniprofiler/miniprofilertexts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "miniprofiler/miniprofilermodel.h"
#include "text/showntext.h"

namespace
{
const QChar PLUS_MINUS( 0xB1 );

// As printf writes it with "%.*f" (ties go to the even digit, which QString::number does not do), in every locale.
QString FixedText( double flValue, int nDecimals )
{
	char digits[std::numeric_limits<double>::max_exponent10 + 16];
	const auto end = std::to_chars( digits, digits + sizeof( digits ), flValue, std::chars_format::fixed, nDecimals );
	return QString::fromLatin1( digits, static_cast<int>( end.ptr - digits ) );
}

// Whole numbers without decimals, others with one.
QString CountText( float flValue )
{
	return FixedText( double{ flValue }, flValue == std::floor( flValue ) ? 0 : 1 );
}

class CTimeFormat
{
public:
	explicit CTimeFormat( const MiniProfilerNumbers &numbers )
		: m_nDecimals( numbers.m_Unit.Decimals() )
		, m_Unit( numbers.m_Unit.m_Unit )
		, m_flFactor( numbers.m_flFactor )
	{
	}

	QString Text( double flTicks ) const { return FixedText( flTicks * m_flFactor, m_nDecimals ); }
	QString WithUnit( double flTicks ) const { return Text( flTicks ) + m_Unit; }
	QString WithUnit( uint64_t nTicks ) const { return WithUnit( static_cast<double>( nTicks ) ); }

private:
	int m_nDecimals;
	QString m_Unit;
	double m_flFactor;
};

// "Cur [Ave]", "Cur", "Ave" or nothing.
template <typename Format>
QString CurAveText( double flCur, double flAve, const MiniProfilerNumbers &numbers, const Format &format )
{
	QString text;
	if ( numbers.m_bCur )
	{
		text = format( flCur );
		if ( numbers.m_bAve )
			text += " [" + format( flAve ) + ']';
	}
	else if ( numbers.m_bAve )
		text = format( flAve );
	return text;
}

void AppendPeak( QString &text, const QString &peak )
{
	if ( !text.isEmpty() )
		text += QLatin1String( " -> " );
	text += peak;
}

bool AreCallsFaint( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers )
{
	return ( !numbers.m_bCur || values.m_flCur <= 0.5f ) && ( !numbers.m_bAve || values.m_flAve <= 0.5f ) &&
		   ( !numbers.m_bStDev || values.m_flStDev < 0.05f ) && ( !numbers.m_bPeaks || values.m_flPeak < 0.5f );
}

bool AreTimesFaint( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers )
{
	const auto Shows = [&]( bool bShown, float flValue )
	{ return bShown && numbers.m_flFactor * double{ flValue } >= double{ numbers.m_Unit.m_flThreshold }; };
	return !Shows( numbers.m_bCur, values.m_flCur ) && !Shows( numbers.m_bAve, values.m_flAve ) &&
		   !Shows( numbers.m_bStDev, values.m_flStDev ) && !Shows( numbers.m_bPeaks, values.m_flPeak );
}

// A group's inclusive sum counts nested scopes more than once: it is exact only where it equals the exclusive one.
bool IsApproximate( const CMiniProfilerRow &row, int nColumn )
{
	if ( !row.HasFlag( MINIPROFILER_ROW_GROUP ) )
		return false;
	if ( nColumn == MINIPROFILER_INCLUSIVE )
		return row.m_Ave[MINIPROFILER_EXCLUSIVE] != row.m_Ave[MINIPROFILER_INCLUSIVE];
	return nColumn == MINIPROFILER_INCLUSIVE_CALL &&
		   row.m_Ave[MINIPROFILER_EXCLUSIVE_CALL] != row.m_Ave[MINIPROFILER_INCLUSIVE_CALL];
}

struct CostStatistics
{
	double m_flAverage = 0.0;
	double m_flDeviation = 0.0; // population
	uint64_t m_nMaximum = 0;    // of all but the newest

	// The larger-of comparison, which starts from the largest number, never brings it down. That is deliberate.
	uint64_t m_nLowerBound = std::numeric_limits<uint64_t>::max();
};

CostStatistics ComputeCosts( const CMiniProfilerCostHistory &history )
{
	CostStatistics statistics;
	const double flCount = history.Count();
	for ( uint32_t i = 0; i < history.Count(); i++ )
	{
		statistics.m_flAverage += static_cast<double>( history.At( i ) ) / flCount;
		if ( i == 0 )
			continue;
		statistics.m_nMaximum = std::max( statistics.m_nMaximum, history.At( i ) );
		statistics.m_nLowerBound = std::max( statistics.m_nLowerBound, history.At( i ) );
	}
	double flSquares = 0.0;
	for ( uint32_t i = 0; i < history.Count(); i++ )
	{
		const double flDifference = static_cast<double>( history.At( i ) ) - statistics.m_flAverage;
		flSquares += flDifference * flDifference;
	}
	statistics.m_flDeviation = std::sqrt( flSquares / flCount );
	return statistics;
}
} // namespace

MiniProfilerSortArray MiniProfilerNumbers::SortArray() const
{
	if ( m_bCur )
		return MiniProfilerSortArray::Cur;
	if ( m_bAve )
		return MiniProfilerSortArray::Ave;
	return m_bStDev ? MiniProfilerSortArray::StDev : MiniProfilerSortArray::Peaks;
}

MiniProfilerValues MiniProfilerValues::Of( const CMiniProfilerRow &row, int nColumn )
{
	const auto nIndex = static_cast<size_t>( nColumn );
	return { row.m_Cur[nIndex], row.m_Ave[nIndex], row.m_StDev[nIndex], row.m_Peaks[nIndex] };
}

QString MiniProfilerCallText( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers )
{
	QString text = CurAveText( double{ values.m_flCur }, double{ values.m_flAve }, numbers,
		[]( double flValue ) { return CountText( static_cast<float>( flValue ) ); } );
	if ( numbers.m_bStDev )
		text += QStringLiteral( " %1 " ).arg( PLUS_MINUS ) + FixedText( double{ values.m_flStDev }, 1 );
	if ( numbers.m_bPeaks )
		AppendPeak( text, CountText( values.m_flPeak ) );
	return text;
}

QString MiniProfilerTimeText( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers )
{
	const CTimeFormat format( numbers );
	QString text = CurAveText( double{ values.m_flCur }, double{ values.m_flAve }, numbers,
		[&]( double flTicks ) { return format.Text( flTicks ); } );
	if ( numbers.m_bStDev )
		text += QLatin1String( " +- " ) + format.Text( double{ values.m_flStDev } );
	if ( numbers.m_bPeaks )
		AppendPeak( text, format.Text( double{ values.m_flPeak } ) );
	return text;
}

MiniProfilerCellText MiniProfilerNumberText(
	const CMiniProfilerRow &row, int nColumn, const MiniProfilerNumbers &numbers )
{
	const MiniProfilerValues values = MiniProfilerValues::Of( row, nColumn );
	if ( nColumn == MINIPROFILER_CALLS )
		return { MiniProfilerCallText( values, numbers ),
			AreCallsFaint( values, numbers ) ? MiniProfilerEmphasis::Faint : MiniProfilerEmphasis::Normal };

	const QString text = MiniProfilerTimeText( values, numbers );
	if ( AreTimesFaint( values, numbers ) )
		return { text, MiniProfilerEmphasis::Faint };
	if ( IsApproximate( row, nColumn ) )
		return { '~' + text + '~', MiniProfilerEmphasis::Approximate };
	return { text, MiniProfilerEmphasis::Normal };
}

QString MiniProfilerRowText( const CMiniProfilerRow &row, const MiniProfilerNumbers &numbers )
{
	QString text = ShownText( row.Name() );
	for ( int nColumn = MINIPROFILER_CALLS; nColumn < static_cast<int>( MINIPROFILER_COLUMNS ); nColumn++ )
		text += '\t' + MiniProfilerNumberText( row, nColumn, numbers ).m_Text;
	return text;
}

QStringList MiniProfilerHeaderLabels( const QString &unit, const QString &interval )
{
	return { QStringLiteral( "Name" ), "Calls per " + interval, unit + '/' + interval + ", Inclusive",
		unit + '/' + interval + ", Exclusive", unit + "/call, Inclusive", unit + "/call, Exclusive" };
}

QString MiniProfilerSummaryText(
	const CMiniProfilerGroup &sum, const MiniProfilerNumbers &numbers, const QString &interval )
{
	return MiniProfilerTimeText( MiniProfilerValues::Of( sum, MINIPROFILER_EXCLUSIVE ), numbers ) +
		   numbers.m_Unit.m_Unit + '/' + interval + ", " +
		   MiniProfilerCallText( MiniProfilerValues::Of( sum, MINIPROFILER_CALLS ), numbers ) + " calls";
}

// All times go through the one factor, also those that this process measured with its own counter.
QString MiniProfilerOverheadText( const MiniProfilerOverhead &overhead, const MiniProfilerNumbers &numbers )
{
	const CTimeFormat format( numbers );
	const CostStatistics costs = ComputeCosts( overhead.m_History );
	QString text = QLatin1String( "MiniProfiler net engine service: " ) +
				   CurAveText( static_cast<double>( overhead.m_History.At( 0 ) ), costs.m_flAverage, numbers,
					   [&]( double flTicks ) { return format.Text( flTicks ); } );
	if ( numbers.m_bStDev )
		text += QStringLiteral( " %1 " ).arg( PLUS_MINUS ) + format.Text( costs.m_flDeviation );
	text += numbers.m_Unit.m_Unit;
	text += QString::asprintf( "\n%u/%u profilers, %d bytes", overhead.m_Counters.m_nTransmitted,
		overhead.m_Counters.m_nRegistered, static_cast<int>( overhead.m_Counters.m_nPacketSize ) );
	return text + "\nKesto " + format.WithUnit( double{ overhead.m_flKestoTicks } ) + ", data view " +
		   format.WithUnit( overhead.m_nDataViewTicks ) + ", paint " + format.WithUnit( overhead.m_nPaintTicks );
}

QString MiniProfilerOverheadToolTip( const MiniProfilerOverhead &overhead, const MiniProfilerNumbers &numbers )
{
	const CTimeFormat format( numbers );
	const CostStatistics costs = ComputeCosts( overhead.m_History );
	QString text = "Overhead: " + format.WithUnit( costs.m_nLowerBound ) + " to " + format.WithUnit( costs.m_nMaximum );
	text += QString::asprintf( "\n%u profilers transmitted from game, %u profilers total registered/scanned in game, "
							   "%d profiler names sent, total packet size %d bytes",
		overhead.m_Counters.m_nTransmitted, overhead.m_Counters.m_nRegistered, overhead.m_Counters.m_nNamesSent,
		static_cast<int>( overhead.m_Counters.m_nPacketSize ) );
	if ( overhead.m_nIgnoredIds > 0 )
		text += QStringLiteral( "\n%1%2 further profilers ignored: at most %3 are kept" )
					.arg( overhead.m_nIgnoredIds )
					.arg( overhead.m_nIgnoredIds < CMiniProfilerModel::MAX_RECORDS ? "" : " or more" )
					.arg( CMiniProfilerModel::MAX_RECORDS );
	return text;
}
