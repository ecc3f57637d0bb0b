/*
 * dlxcomn.h - the whole public interface of libdlxcomn_r64. types.h tells the conventions of all headers.
 */
#ifndef DLXCOMN_DLXCOMN_H
#define DLXCOMN_DLXCOMN_H

#include <dlxcomn/appglobal.h>
#include <dlxcomn/charconv.h>
#include <dlxcomn/charload.h>
#include <dlxcomn/charset.h>
#include <dlxcomn/checkfiles.h>
#include <dlxcomn/constant.h>
#include <dlxcomn/context.h>
#include <dlxcomn/conversions.h>
#include <dlxcomn/convert.h>
#include <dlxcomn/datetext.h>
#include <dlxcomn/datetime.h>
#include <dlxcomn/diag.h>
#include <dlxcomn/list.h>
#include <dlxcomn/locale.h>
#include <dlxcomn/locator.h>
#include <dlxcomn/message.h>
#include <dlxcomn/money.h>
#include <dlxcomn/null.h>
#include <dlxcomn/numeric.h>
#include <dlxcomn/oid.h>
#include <dlxcomn/path.h>
#include <dlxcomn/pool.h>
#include <dlxcomn/services.h>
#include <dlxcomn/signals.h>
#include <dlxcomn/sortorder.h>
#include <dlxcomn/thread.h>
#include <dlxcomn/types.h>

#endif
