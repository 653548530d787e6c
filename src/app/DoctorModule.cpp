// SPDX-License-Identifier: MIT
#include "DoctorModule.h"

#include "commands/DoctorCommand.h"
#include "commands/Terminal.h"

namespace
{

int run(const QStringList &arguments)
{
    const auto request = parseDoctorArguments(arguments);
    return request ? runDoctor(*request) : refuse(request.error());
}

} // namespace

extern "C" Q_DECL_EXPORT const ModuleOffer *strandloomModule()
{
    static const DoctorModule module{{}, run};
    return &module;
}
