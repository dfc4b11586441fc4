// Umbrella header: the whole public interface of ZkCommon.
#ifndef ZKCOMMON_ZKCOMMON_H
#define ZKCOMMON_ZKCOMMON_H

// core
#include "zkcommon/core/char.h"
#include "zkcommon/core/error.h"
#include "zkcommon/core/errorxml.h"
#include "zkcommon/core/export.h"
#include "zkcommon/core/fwd.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/core/message.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/strings.h"
#include "zkcommon/core/typeids.h"
#include "zkcommon/core/unicode.h"

// values
#include "zkcommon/values/color.h"
#include "zkcommon/values/length.h"
#include "zkcommon/values/parser.h"
#include "zkcommon/values/ranges.h"
#include "zkcommon/values/tokenizer.h"
#include "zkcommon/values/transmatrix.h"
#include "zkcommon/values/value.h"

// text
#include "zkcommon/text/counterstyle.h"
#include "zkcommon/text/lang.h"
#include "zkcommon/text/util.h"

// io
#include "zkcommon/io/customstream.h"
#include "zkcommon/io/fwd.h"
#include "zkcommon/io/gzipstream.h"
#include "zkcommon/io/icuistream.h"
#include "zkcommon/io/memstream.h"
#include "zkcommon/io/rqcstream.h"
#include "zkcommon/io/tempfile.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/io/zipfile.h"

// dom
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/documentfragment.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/dom/fwd.h"
#include "zkcommon/dom/iterator.h"
#include "zkcommon/dom/loadsource.h"
#include "zkcommon/dom/namednodemap.h"
#include "zkcommon/dom/namespacemanager.h"
#include "zkcommon/dom/node.h"
#include "zkcommon/dom/nodelist.h"
#include "zkcommon/dom/processinginstruction.h"
#include "zkcommon/dom/text.h"

// xml
#include "zkcommon/xml/xmlloadsource.h"
#include "zkcommon/xml/xmlparser.h"
#include "zkcommon/xml/xmlserializer.h"
#include "zkcommon/xml/xmlutil.h"

// crypto
#include "zkcommon/crypto/acceleration.h"
#include "zkcommon/crypto/aes.h"
#include "zkcommon/crypto/fwd.h"
#include "zkcommon/crypto/md5.h"
#include "zkcommon/crypto/rc4.h"
#include "zkcommon/crypto/sha1.h"
#include "zkcommon/crypto/sha256.h"
#include "zkcommon/crypto/sha512.h"

#endif // ZKCOMMON_ZKCOMMON_H
