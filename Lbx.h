#ifndef ZORV2_LBX_LBX_H
#define ZORV2_LBX_LBX_H

// Everything of the library in one include.

#include "archive/File.h"
#include "entry/AbstractContent.h"
#include "entry/Content.h"
#include "entry/Unknown.h"
#include "entry/Write.h"
#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "kinds/Abcost.h"
#include "kinds/Empty.h"
#include "kinds/Leader.h"
#include "kinds/Race.h"
#include "kinds/Sound.h"
#include "kinds/Text.h"
#include "knowledge/Magic.h"

#endif
