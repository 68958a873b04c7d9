#include "miniprofiler/miniprofilerrow.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace
{
void DestructRowPointer( void * ) {}

void *ConstructRowPointer( void *pPlace, const void *pFrom )
{
	return new ( pPlace ) CMiniProfilerRow *( pFrom ? *static_cast<CMiniProfilerRow *const *>( pFrom ) : nullptr );
}

class CRowPointerType
{
public:
	CRowPointerType()
		: m_nId( QMetaType::registerNormalizedType( "CMiniProfilerRow*", &DestructRowPointer, &ConstructRowPointer,
			  static_cast<int>( sizeof( CMiniProfilerRow * ) ), QMetaType::MovableType, nullptr ) )
	{
	}
	~CRowPointerType() { QMetaType::unregisterType( m_nId ); }
	CRowPointerType( const CRowPointerType & ) = delete;
	CRowPointerType &operator=( const CRowPointerType & ) = delete;

	const int m_nId;
};
} // namespace

int QMetaTypeId<CMiniProfilerRow *>::qt_metatype_id()
{
	static const CRowPointerType s_Type;
	return s_Type.m_nId;
}

#include "text/showntext.h"

CMiniProfilerRow::CMiniProfilerRow( MiniProfilerRowFlag kind )
	: m_nFlags( kind )
{
	m_StaticName.setTextFormat( Qt::PlainText ); // a name like "<lambda>" is no markup
}

CMiniProfilerRow::~CMiniProfilerRow() = default;

void CMiniProfilerRow::SetName( const QString &name )
{
	m_Name = name;
	m_bNamed = true;
	m_StaticName.setText( ShownText( name, MINIPROFILER_MAX_DRAWN_NAME ) );
	m_bNameLaidOut = false;
	m_nChanges |= MINIPROFILER_ROW_RENAMED;
}

const QStaticText &CMiniProfilerRow::LaidOutName( const QFont &font )
{
	if ( !m_bNameLaidOut || m_NameFont != font )
	{
		m_StaticName.prepare( QTransform(), font );
		m_NameFont = font;
		m_bNameLaidOut = true;
	}
	return m_StaticName;
}

void CMiniProfilerRow::SetFlag( MiniProfilerRowFlag flag, bool bOn )
{
	m_nFlags = bOn ? m_nFlags | flag : m_nFlags & ~uint32_t{ flag };
}

void CMiniProfilerRow::SetBudgetColour( const QColor &colour )
{
	m_Colour = colour;
	SetFlag( MINIPROFILER_ROW_COLOURED );
}

const MiniProfilerArray &CMiniProfilerRow::Array( MiniProfilerSortArray array ) const
{
	switch ( array )
	{
		case MiniProfilerSortArray::Cur:
			return m_Cur;
		case MiniProfilerSortArray::Ave:
			return m_Ave;
		case MiniProfilerSortArray::StDev:
			return m_StDev;
		case MiniProfilerSortArray::Peaks:
			break;
	}
	return m_Peaks;
}

CQMiniProfilerRecord::CQMiniProfilerRecord( uint64_t nId, uint32_t nHistoryIndex )
	: CMiniProfilerRow( MINIPROFILER_ROW_RECORD )
	, m_nId( nId )
	, m_nHistoryIndex( nHistoryIndex )
{
}

void CQMiniProfilerRecord::SetDescription( std::string_view description )
{
	m_WholeDescription = QString::fromUtf8( description.data(), static_cast<int>( description.size() ) );
	m_pDescription = std::make_unique<char[]>( description.size() + 1 );
	std::copy( description.begin(), description.end(), m_pDescription.get() );

	m_Lines.clear();
	m_Lines.reserve( static_cast<size_t>( std::count( description.begin(), description.end(), '\n' ) ) );
	char *pStart = m_pDescription.get();
	while ( char *pEnd = std::strchr( pStart, '\n' ) )
	{
		*pEnd = '\0';
		m_Lines.emplace_back( pStart, pEnd );
		pStart = pEnd + 1;
	}

	if ( m_Lines.size() > LINE_FILE )
	{
		char *pFile = m_pDescription.get() + ( m_Lines[LINE_FILE].data() - m_pDescription.get() );
		for ( ; *pFile; pFile++ )
		{
			if ( *pFile >= 'A' && *pFile <= 'Z' )
				*pFile = static_cast<char>( *pFile - 'A' + 'a' );
			else if ( *pFile == '\\' )
				*pFile = '/';
		}
	}
}

std::string_view CQMiniProfilerRecord::Line( size_t nIndex ) const
{
	return nIndex < m_Lines.size() ? m_Lines[nIndex] : std::string_view();
}

CMiniProfilerGroup::CMiniProfilerGroup( const QString &name, CMiniProfilerGroup *pParent, int32_t nIndex )
	: CMiniProfilerRow( MINIPROFILER_ROW_GROUP )
	, m_nIndex( nIndex )
	, m_pParent( pParent )
{
	m_Colour = Qt::white;
	m_pTreeParent = pParent;
	SetName( name );
}

void CMiniProfilerGroup::ResetStatistics()
{
	m_Ave = m_StDev = m_Cur = m_Peaks = {};
	m_nMembers = 0;
}

void CMiniProfilerGroup::Merge( const CMiniProfilerRow &row )
{
	for ( size_t i = 0; i < MINIPROFILER_COLUMNS; i++ )
	{
		m_Ave[i] += row.m_Ave[i];
		m_Cur[i] += row.m_Cur[i];
		m_Peaks[i] += row.m_Peaks[i];
		// In double precision, where the square of a float cannot overflow.
		const double flOwn = double{ m_StDev[i] };
		const double flOther = double{ row.m_StDev[i] };
		m_StDev[i] = static_cast<float>( std::sqrt( flOwn * flOwn + flOther * flOther ) );
	}
	m_nMembers++;
}
