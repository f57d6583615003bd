#include "src/ui/LeftOutTexts.h"

#include <algorithm>

namespace {

constexpr LocalizedRow rows[] = {
    {oneLeftOut,
     {(L"已跳过 1 封邮件。其主题无法用作文件名：主题包含文件名不允许使用的字符（如 : 或 ?），或者是 Windows "
       L"保留的名称，或者过长。"),
      oneLeftOut,
      (L"1 E-Mail wurde übersprungen. Der Betreff kann nicht als Dateiname verwendet werden: Er enthält ein in "
       L"Dateinamen nicht zulässiges Zeichen (z. B. : oder ?), ist ein von Windows reservierter Name oder ist zu "
       L"lang."),
      (L"1 e-mail a été ignoré. Son objet ne peut pas être utilisé comme nom de fichier\u00A0: il contient un "
       L"caractère interdit dans les noms de fichiers (: ou ?, par exemple), correspond à un nom réservé par Windows "
       L"ou est trop long."),
      (L"1 e-mail è stata ignorata. L'oggetto non può essere usato come nome di file: contiene un carattere non "
       L"consentito nei nomi di file (ad esempio : o ?), è un nome riservato da Windows oppure è troppo lungo."),
      (L"1 件のメールをスキップしました。件名をファイル名として使用できません。ファイル名に使用できない文字（: や ? "
       L"など）が含まれているか、Windows の予約名であるか、長すぎるためです。"),
      (L"1 e-mail foi ignorado. O assunto não pode ser usado como nome de arquivo: contém um caractere não permitido "
       L"em nomes de arquivo (como : ou ?), é um nome reservado pelo Windows ou é muito longo."),
      (L"Se ha omitido 1 correo. El asunto no se puede usar como nombre de archivo: contiene un carácter no permitido "
       L"en los nombres de archivo (como : o ?), es un nombre reservado por Windows o es demasiado largo."),
      (L"已略過 1 封郵件。其主旨無法作為檔案名稱：主旨包含檔案名稱不允許使用的字元（如 : 或 ?），或者是 Windows "
       L"保留的名稱，或者過長。"),
      (L"Пропущено 1 письмо. Его тему нельзя использовать как имя файла: она содержит символ, недопустимый в именах "
       L"файлов (например, «:» или «?»), совпадает с именем, зарезервированным системой Windows, или слишком длинна."),
      (L"1 e-mailbericht is overgeslagen. Het onderwerp kan niet als bestandsnaam worden gebruikt: het bevat een teken "
       L"dat niet is toegestaan in bestandsnamen (zoals : of ?), is een door Windows gereserveerde naam of is te "
       L"lang."),
      (L"이메일 1개가 제외되었습니다. 제목을 파일 이름으로 사용할 수 없습니다. 파일 이름에 허용되지 않는 문자(: 또는 ? "
       L"등)가 있거나, Windows에서 예약한 이름이거나, 너무 깁니다.")}},
    {andMore,
     {L"以及另外 {} 封", andMore, L"und {} weitere", L"et {} de plus", L"Altre e-mail ignorate: {}", L"ほか {} 件",
      L"e mais {}", L"y {} más", L"以及另外 {} 封", L"и ещё {}", L"en nog {}", L"외 {}개"}},
    {manyLeftOut,
     {(L"已跳过 {} 封邮件。这些邮件的主题无法用作文件名：主题包含文件名不允许使用的字符（如 : 或 ?），或者是 Windows "
       L"保留的名称，或者过长。"),
      manyLeftOut,
      (L"{} E-Mails wurden übersprungen. Der jeweilige Betreff kann nicht als Dateiname verwendet werden: Er enthält "
       L"ein in Dateinamen nicht zulässiges Zeichen (z. B. : oder ?), ist ein von Windows reservierter Name oder ist "
       L"zu lang."),
      (L"{} e-mails ont été ignorés. Leur objet ne peut pas être utilisé comme nom de fichier\u00A0: il contient un "
       L"caractère interdit dans les noms de fichiers (: ou ?, par exemple), correspond à un nom réservé par Windows "
       L"ou est trop long."),
      (L"{} e-mail sono state ignorate. Gli oggetti non possono essere usati come nomi di file: contengono un "
       L"carattere non consentito nei nomi di file (ad esempio : o ?), sono nomi riservati da Windows oppure sono "
       L"troppo lunghi."),
      (L"{} 件のメールをスキップしました。件名をファイル名として使用できません。ファイル名に使用できない文字（: や ? "
       L"など）が含まれているか、Windows の予約名であるか、長すぎるためです。"),
      (L"{} e-mails foram ignorados. Os assuntos não podem ser usados como nomes de arquivo: contêm um caractere não "
       L"permitido em nomes de arquivo (como : ou ?), são nomes reservados pelo Windows ou são muito longos."),
      (L"Se han omitido {} correos. Los asuntos no se pueden usar como nombres de archivo: contienen un carácter no "
       L"permitido en los nombres de archivo (como : o ?), son nombres reservados por Windows o son demasiado largos."),
      (L"已略過 {} 封郵件。這些郵件的主旨無法作為檔案名稱：主旨包含檔案名稱不允許使用的字元（如 : 或 ?），或者是 "
       L"Windows 保留的名稱，或者過長。"),
      (L"Пропущено писем: {}. Их темы нельзя использовать как имена файлов: они содержат символ, недопустимый в именах "
       L"файлов (например, «:» или «?»), совпадают с именами, зарезервированными системой Windows, или слишком "
       L"длинны."),
      (L"{} e-mailberichten zijn overgeslagen. De onderwerpen kunnen niet als bestandsnaam worden gebruikt: ze "
       L"bevatten een teken dat niet is toegestaan in bestandsnamen (zoals : of ?), zijn door Windows gereserveerde "
       L"namen of zijn te lang."),
      (L"이메일 {}개가 제외되었습니다. 제목을 파일 이름으로 사용할 수 없습니다. 파일 이름에 허용되지 않는 문자(: 또는 "
       L"? 등)가 있거나, Windows에서 예약한 이름이거나, 너무 깁니다.")}},
};

static_assert(std::ranges::is_sorted(rows, {}, &LocalizedRow::key));

}  // namespace

constinit const LocalizedStringTable leftOutTexts = rows;
