#include "Services.h"

#include "clipboard/MakeClipboardSource.h"

Services::Services()
    : clipboard(makeClipboardSource())
{
    pages.setMaxThreadCount(1);
}
