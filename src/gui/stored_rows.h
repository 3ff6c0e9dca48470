#pragma once

#include "gui/graphic_buffer.h"

namespace norava {

// Private to the sources of CGraphicBuffer.
template <typename UseRow>
void CGraphicBuffer::ForEachStoredRow(CRect rect, const UseRow& use) {
    uint32_t* row = BlockAt(rect.left, rect.top + rect.height - 1);
    const size_t words = ToCount(rect.width) * ToCount(scaleFactor);
    const size_t rows = ToCount(rect.height) * ToCount(scaleFactor);
    for (size_t i = 0; i < rows; ++i, row += StrideWords())
        use(row, words);
}

}  // namespace norava
