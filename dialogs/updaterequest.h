#pragma once

#include <QtGlobal>

class QNetworkAccessManager;
class QNetworkReply;
class QUrl;

/// Asks the maker's server for the document that announces releases.
///
/// The answer comes from outside: a body larger than the limit is refused while it arrives, packed or not, the whole
/// exchange has a time limit, and redirections are followed to https only. An exchange that breaks one of these ends
/// with an error of the reply. User-interface thread; nothing waits.
namespace updaterequest {

/// Many times what the document can reasonably need.
inline constexpr qint64 kLargestBodyBytes = qint64{1024} * 1024;
inline constexpr int kTimeLimitMs = 15'000;
inline constexpr int kMostRedirections = 5;

/// Where the document is.
QUrl address();

/// Sends the request, without headers or parameters of its own. The reply belongs to network; the caller deletes it
/// later.
///
/// @param timeLimitMs for the whole exchange
QNetworkReply* send(QNetworkAccessManager& network, int timeLimitMs = kTimeLimitMs);

} // namespace updaterequest
