// SPDX-License-Identifier: MIT
#include "ExportError.h"

using namespace Qt::StringLiterals;

QString description(const ExportError &error)
{
    switch (error.kind) {
    case ExportError::Kind::cannotRead:
        return u"the links cannot be read: "_s + error.detail;
    case ExportError::Kind::cannotWrite:
    case ExportError::Kind::notLoaded:
        return error.detail;
    case ExportError::Kind::noFont:
        return u"a PDF cannot be written because no font is installed"_s;
    case ExportError::Kind::cannotDraw:
        return u"the PDF cannot be drawn: "_s + error.detail;
    case ExportError::Kind::stopped:
        return u"the export was stopped"_s;
    }
    Q_UNREACHABLE();
}
