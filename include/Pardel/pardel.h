#pragma once

/** @file
 * The whole interface of libPardel in one include.
 */

#include <Pardel/absgraphobj.h>
#include <Pardel/apprecords.h>
#include <Pardel/archive.h>
#include <Pardel/calendar.h>
#include <Pardel/commonclass.h>
#include <Pardel/connection.h>
#include <Pardel/crc_ccitt.h>
#include <Pardel/currentuser.h>
#include <Pardel/dialogobjsfromto.h>
#include <Pardel/energorecords.h>
#include <Pardel/fdpassword.h>
#include <Pardel/inifiles.h>
#include <Pardel/interfaces.h>
#include <Pardel/lookups.h>
#include <Pardel/mobdata.h>
#include <Pardel/packetframer.h>
#include <Pardel/pardel_export.h>
#include <Pardel/pardelversion.h>
#include <Pardel/sensorinfo.h>
#include <Pardel/tlog.h>
#include <Pardel/treeobjcheckable.h>
#include <Pardel/treeobjcheckablee.h>
#include <Pardel/treesortfilterproxymodel.h>
#include <Pardel/tutils.h>
