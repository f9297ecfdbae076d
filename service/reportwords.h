// Reports of the link in the technician's words.
#pragma once

#include "link/commandreport.h"

#include <QString>

/// How a command ended and what to do next: "完成", "没有应答，请检查接线、从机地址和波特率".
[[nodiscard]] QString reportWords(const CommandReport& report);

/// Name of a user of the line, as in "正在下载图片"; empty for LineUser::none.
[[nodiscard]] QString lineUserWords(LineUser user);
