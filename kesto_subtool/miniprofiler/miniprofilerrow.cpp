#include "miniprofiler/miniprofilerrow.h"

#include <cmath>
#include <new>

#include "text/showntext.h"

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

struct CMiniProfilerRow::LaidOutText
{
	QStaticText m_Text;
	QFont m_Font;
};

CMiniProfilerRow::CMiniProfilerRow( MiniProfilerRowFlag kind )
	: m_nFlags( kind )
{
}

CMiniProfilerRow::~CMiniProfilerRow() = default;

void CMiniProfilerRow::SetName( const QString &name )
{
	m_Name = name;
	m_bNamed = true;
	m_pLaidOutName.reset();
	m_nChanges |= MINIPROFILER_ROW_RENAMED;
}

const QStaticText &CMiniProfilerRow::LaidOutName( const QFont &font )
{
	if ( !m_pLaidOutName || m_pLaidOutName->m_Font != font )
	{
		QStaticText text( ShownText( m_Name, MINIPROFILER_MAX_DRAWN_NAME ) );
		text.setTextFormat( Qt::PlainText ); // a name like "<lambda>" is no markup
		text.prepare( QTransform(), font );
		m_pLaidOutName = std::make_unique<LaidOutText>( LaidOutText{ text, font } );
	}
	return m_pLaidOutName->m_Text;
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
	m_pDescription = description.empty() ? nullptr : std::make_unique<CMiniProfilerDescription>( description );
}

QString CQMiniProfilerRecord::Description() const
{
	if ( !m_pDescription )
		return {};
	const std::string_view text = m_pDescription->Text();
	return QString::fromUtf8( text.data(), static_cast<int>( text.size() ) );
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
