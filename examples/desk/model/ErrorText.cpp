#include "examples/desk/model/ErrorText.h"

#include <algorithm>
#include <iterator>

#include "examples/desk/Text.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace desk {

namespace {

using tvk::KestrinConstants;

struct Wording {
    int code;
    char const * text;
};

constexpr Wording WORDINGS[] = {
    {KestrinConstants::ERR_FailedToCreateConnection, "サーバーに接続できませんでした。"},
    {KestrinConstants::ERR_InvalidMessageSize, "大きすぎるデータを受け取りました。"},
    {KestrinConstants::ERR_XmlParsingError, "ニュースを読み取れませんでした。"},
    {KestrinConstants::ERR_AuthenticationFailed, "認証に失敗しました。"},
    {KestrinConstants::ERR_InvalidMessageData, "読み取れないデータを受け取りました。"},
    {KestrinConstants::ERR_RequestCanceled, "要求を取り消しました。"},
    {KestrinConstants::ERR_RequestTimeOut, "時間内に応答がありませんでした。"},
    {KestrinConstants::ERR_ConnectionClosedByRemotePeer, "サーバーとの接続が切れました。"},
    {KestrinConstants::ERR_DuplicatedUserId, "同じ利用者が別の場所でログインしました。"},
    {KestrinConstants::ERR_HeartbeatFailed, "サーバーからの応答が途絶えました。"},
    {KestrinConstants::ERR_UnexpectedReplyMessage, "予期しない応答を受け取りました。"},
    {KestrinConstants::ERR_VersionUpRequired, "新しい版に更新してください。"},
    {KestrinConstants::ERR_SystemMaintenance, "システムは保守中です。"},
    {KestrinConstants::ERR_AuthenticationExpired,
     "ログインの有効期限が切れました。もう一度ログインしてください。"},
    {KestrinConstants::ERR_RealServiceRetryOut, "再接続を断念しました。"},
    {KestrinConstants::ERR_ProtocolFailure, "通信の手順が正しくありません。"},
    {KestrinConstants::ERR_SessionError, "ログインしていないため処理できません。"},
    {KestrinConstants::ERR_NetworkIOError, "通信に失敗しました。"},
};

bool isAscii(std::string const & text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

}  // namespace

std::string errorText(tvk::ErrorInfo const & error) {
    std::string const message = utf8(error.getErrorMessage());
    if (!isAscii(message)) {
        return message;
    }
    bool const isAgents = error.getDomain() == KestrinConstants::ErrorDomain_Kestrin;
    auto const * const wording =
        std::find_if(std::begin(WORDINGS), std::end(WORDINGS),
                     [&](Wording const & known) { return known.code == error.getErrorCode(); });
    if (isAgents && wording != std::end(WORDINGS)) {
        return wording->text;
    }
    return message.empty() ? "処理に失敗しました。" : message;
}

}  // namespace desk
