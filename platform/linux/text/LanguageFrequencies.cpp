// Written by benchmarks/detection/makeLanguageFrequencies.py: change that script, not this table.
// clang-format off
#include "platform/linux/text/LanguageFrequencies.h"

namespace {

constexpr Frequency arLetters[] = {
    {3, u"ال"},
    {4, u"ترمي"},
    {5, u"بةحدسعفقنو"},
    {6, u"أإجخصطكه"},
    {7, u"ئذزشضغى\u0651"},
    {8, u"ءثظ\u064F"},
    {9, u"،\u064B\u0650"},
    {10, u"؟آؤ\u064Eڤ“”"},
    {11, u"ـ١"},
    {12, u"\u00A0\u0652٠٪"},
    {13, u"پﻷ"},
};

constexpr Frequency arPairs[] = {
    {4, u" اال"},
    {5, u"ة "},
    {6, u" مت ر ل لمن "},
    {7, u" أ إ ب ت ع ف لا اتارد لالتم ى ي "},
    {8, u" ح ق ه و يإلائاداسافامانب تحترح حدداديراريساستط ع علغيف فيقالألفلولىليمامةملمنناه ها"
     u"و وايايةيديريلين"},
    {9, u" ج خ د ر س ص غ ك ن، ء أنأوئماءاباحاخاعبابدبربقبيتاتختعتقتمتوتيج جلجمحاختخددةدددمذارة"
     u"رجرسروز سمسيشاصوض عاعدعنعيفافتفرق قةقيك كنلإلبلةلحلخلدلرلسلصلعلقلللنمتمجمحمرمسمعمقمك"
     u"مومينتنقنيهذورولونوييم"},
    {10, u" ث ش ط ”أ أدأسألأمإفئياةاجاضاطاقاكاوايبةبطبعبلتأتبتستشتصتفتلتنث ثاجاجدجهحةحتحذحرحفحو"
     u"خ خاخرخطخلخيدردفدوذهرترشرضركرمر\u0651س سبسلشرشغص صاصدصيضاضيطاطبطرطعظ ظهعةعرعمفذفظفق"
     u"قتقدقرقطقلقنقوكاكتكركلكوكيلجلشلطلكلهمشمفمهم\u064Fنةندنسنشنصنهنوهروتوجوحودوسوعوقوميت"
     u"يحيسيطيعيقيكيو\u064Bا\u0651ر\u0651ل"},
    {11, u"؟ أخأيإعبتتدتكجيذفرفشفطومبمخمديفييي\u0651“ ” "},
};

constexpr Frequency beLetters[] = {
    {3, u"а"},
    {4, u"нры"},
    {5, u"вдезклмопстуцьяі"},
    {6, u"бгчэў"},
    {7, u"йфхш"},
    {8, u"жю"},
    {10, u"«»ё"},
    {11, u"ґ"},
    {12, u"…"},
    {13, u"—"},
};

constexpr Frequency bePairs[] = {
    {5, u" п"},
    {6, u" аа аданвадае канапарацьы ь я і "},
    {7, u" в д з к н савакаламарасатацаўвыенерзаланеннныняніпррысттау ў "},
    {8, u" б г м р у ф і ўабагаеазайапачвевігадззнкокукілельлялім мамеоўперэсасцтотртыфацічаым"
     u"ысыцыяьнэніц"},
    {9, u" т ш яахаявогэд дкдлдндрдудыдэедз звзей йлк клкрксктл лолумлмомямінонтнуньо оводолпл"
     u"попір рос сескспсут тктутэусучх цацецццычычэызыкылыхэкэтю якянідікінісўн"},
    {10, u" « л ц ч э» ашб бабобрбувяглгргудвекелемесетецжажызмзікнлклюмумын ндожоконоросошпкпу"
     u"рмртруслснсьсясітвтнудукулупуцуюфіхахочншчшыыбывыдынытькэаэдэлючягядяряцяўіліміріяўв"
     u"ўдўт"},
};

constexpr Frequency bgLetters[] = {
    {3, u"ае"},
    {4, u"винорт"},
    {5, u"дзклмпс"},
    {6, u"бъя"},
    {7, u"гжйуфцч"},
    {8, u"хшщ"},
    {9, u"ю“„"},
    {13, u"–…"},
};

constexpr Frequency bgPairs[] = {
    {4, u"а "},
    {5, u" не на"},
    {6, u" и п санваи нео рато"},
    {7, u" в д з к оатдаенетзаизиткакомениноовотпопррериростт татети"},
    {8, u" а б е м р т фавадазайаларв вевидедиедекелересзвинирисиякилалелиломамон ободолороспа"
     u"пис сесисътрчеъря "},
    {9, u" г у ч „акамапасбебибобрвовъгод додрежемжджезбзизозпивиеикилимичйлк клктл лннтожозой"
     u"окомонопр ртрясаскслсптвфацичащеъдъзянят“ "},
    {10, u" л ц щs“абагажацачащбаблбъвквнврвсвягагиглгрдндудъевегезейеоечешжажиз здзмзтидиоициш"
     u"й йкйсйткркскукълзлюлям минднсняогоиочпепкпърмрсръсвсмснсотктнтъувулусфифохоцачичкчн"
     u"шкщаъвъкълъсътючяв„ "},
    {11, u" х шаувтвудвепецзгзкзнигииипифйнквкелтлумянноеощояплрвржрнрутту убудукумунуручфецвце"
     u"чвшишнщищоъмям"},
};

constexpr Frequency caLetters[] = {
    {2, u"àó"},
    {3, u"éí"},
    {4, u"«»çè"},
    {5, u"·òú"},
    {6, u"ïü"},
    {7, u"…"},
    {9, u"’"},
    {10, u"°"},
    {11, u"º—→"},
    {13, u"\u00A0α"},
};

constexpr Frequency caPairs[] = {
    {3, u"ióó "},
    {5, u" «« » à çaés"},
    {6, u" à él·límàméràs»tà·làlènín"},
    {7, u" »açiàmèmímònçrètétíuïvàvíànàtàué í ídít"},
    {8, u" úcòfígünànúpçpíqüríròtèuèàcàfàgàmàràsàxç è èdèrícísíxïtò òdòrúlúsüeüè… "},
    {9, u"a»bécàcécídèe»eçfélçmúpàrçrésótóvéxòèsètífímïuònòpónú úm"},
    {10, u" ía…bàdíiïjúlàr»rósís…t»uí«a«c«d«e«f«p«s«tàpçoèvún"},
};

constexpr Frequency caPlainPairs[] = {
    {5, u" da des "},
    {6, u" a c e l p se eleneresl lar ret ta"},
    {7, u" f i m nalanaratcacicofiinitlelimen nantonorperasttetitr"},
    {8, u" h o r t u vacadamctd dadiecegeieteuhai iaicilimioisixlllsmamimpnenonso olomospapopr"
     u"qurirosesitotsu ueunutx "},
    {9, u" b g qabapaqb bablbrc cccedoduemexfefogeguidifirloltm mbmoncniobodotp plrmrrrsrtsasc"
     u"sospsssutgtxtzuaurusvavevixeza"},
};

constexpr Frequency csLetters[] = {
    {2, u"í"},
    {3, u"áěř"},
    {4, u"éýčšž"},
    {5, u"ů"},
    {7, u"ú“„"},
    {8, u"óňť"},
    {9, u"ď…"},
    {10, u"\u00A0"},
    {11, u"ľ"},
    {12, u"–\u202F→∙"},
    {13, u"©°×ô"},
};

constexpr Frequency csPairs[] = {
    {4, u"níí "},
    {5, u"přé "},
    {6, u"nánéněrávávýá áný ě řeříže"},
    {7, u" č žačcídádějíláměnýožtítěužvévěádálátávázícímítýcčeěnřišešíů ž ži"},
    {8, u" ú ř š „ažbědíečežkákékůlélímámíočořrérůsítátétřvívšzázíámáséhémíkílísýmčačičnčíějěl"
     u"ěrětšištží“ "},
    {9, u"býdéičjškýmůpípěrýs“učušyžácákáříhírívízýsýtčkěcěděkřáůžždžkžn„ "},
};

constexpr Frequency csPlainPairs[] = {
    {5, u" pe "},
    {6, u" n s v za o ovpostt u y "},
    {7, u" a b d j k m o tatchenhoi itjekolelilom nanenoodorouprrarosetatetova"},
    {8, u" c h r uacadakalamanasavbobyced dadedndoedekelemereseth ink kaktkukyl lamamen niobok"
     u"olomonosotozr res slsotitrtuv vevovyzaze"},
    {9, u" f i larazbrcicodidyebecejevezhlicidikilisivjajikllnmimomuntnuohoppaplrusisksptntyub"
     u"udujuputvivnznzo"},
};

constexpr Frequency daLetters[] = {
    {2, u"åæø"},
    {4, u"é"},
    {5, u"“”"},
    {6, u"…"},
    {7, u"«»"},
    {9, u"©"},
    {10, u"°–—"},
    {11, u"\u00A0×→∶"},
};

constexpr Frequency daPairs[] = {
    {4, u"væå ær"},
    {5, u"føpåsætøælænætérøjør"},
    {6, u" å æ “hølæræåbåræsøg“ ” "},
    {7, u" ø …håjækækølålømåmænårårøsåsøs”téådånækødøløn… "},
    {8, u" » ”gågægégøhæiékémønænørétævé« åeålåsævøtøv"},
    {9, u" ébåbødøe”fåfælépø» åmædæfægénøbømøs"},
    {10, u" ©eæjømés«sétå© æcét"},
    {11, u" « ° – —cédædénépær”° åkåtåvæ æmø – — “a“f“m“s“t"},
    {12, u"d”kån”»aøe“p“v"},
};

constexpr Frequency daPlainPairs[] = {
    {5, u"e err "},
    {6, u" a d f sdeenetilinn ndrestt teti"},
    {7, u" b e i k m o p t valanatd edelfog gekel lelillmenengorris setave"},
    {8, u" g h l n uafarbrdidsekemesf fii igikisivkakkkoktlalsm maninsntogomonopperarsrtrusisk"
     u"trttunvi"},
    {9, u" ra adagakamapasavbebiblcedadrduegevfefrftgigngrgsheidioitjek krkskuldlgloltlymmnann"
     u"nuodolpoprrdrkrmrorvslsosptou udugulutv va"},
};

constexpr Frequency deLetters[] = {
    {1, u"ü"},
    {2, u"ä"},
    {3, u"ßö"},
    {4, u"«»"},
    {6, u"…"},
    {9, u"çé"},
    {10, u"©‐“„"},
    {11, u"°è–"},
    {12, u"ø\u2009→"},
    {13, u"áãòó≤"},
};

constexpr Frequency dePairs[] = {
    {4, u"füür"},
    {5, u" » ürü« änätüb"},
    {6, u"aßhähökölälürätäwä» ß ßeähärönücügühüs"},
    {7, u" « äfäißlömämömünürös«sätüußwüßtäcägäläuäßöfögörösößülünüt… "},
    {8, u" ö …e«eßgükünänöoßzüßiäsöcöhötüf"},
    {9, u"böbüdügähükän«pät«töwözä»a»sßlädäfämöl"},
    {10, u"bäd«eäeöl«nço«r«süvöy«zö»b»c»d»e»f»h»i»l»m»n»p»r»t»uçoöpümüpüß"},
    {11, u"g«göp«äqömü "},
};

constexpr Frequency dePlainPairs[] = {
    {5, u"e enern "},
    {6, u" a d schdeeigeieinr s stt te"},
    {7, u" b e f g i m n u v wanaubed dielesheicisitlendnengonrescseun"},
    {8, u" h k l o p zalarasatdaemetg h hahrhtigkel lillm mameninnnsntorrardrirsrtsisstiurusve"
     u"vowewizezu"},
    {9, u" c j r tabacambickduebedefegeheuf fafefrgrhihlhni ilimioirkoktlalsltmimmnanuodolomop"
     u"prrgrnrorusospsytatotrtstttzu ufumutways"},
    {10, u"kao uc"},
};

constexpr Frequency elLetters[] = {
    {3, u"α"},
    {4, u"εινορστ"},
    {5, u"ίγηκλμπςυ"},
    {6, u"άέήδθχωό"},
    {7, u"φύώ"},
    {8, u"βξ"},
    {9, u"ζψ"},
    {10, u"«»"},
    {13, u"…"},
};

constexpr Frequency elPairs[] = {
    {5, u"ς "},
    {6, u" α ε π σ τα η ν ο ουσητο"},
    {7, u" δ κ μή αναρατε είειεπερηςι ιαικισκαμαμεναποροσττατετηυ ων"},
    {8, u" γ ν ο χά ένήςίαίνίοαιαλαπαςασγήγιγρδεδιενετηνησιλιοκεκολελομέμονοντογοιομονοποροςοσ"
     u"ούπαπεπιπρραργρισετήτιτρχεό "},
    {9, u" έ ή β η θ λ υ φ όάλάνάτήσί ίσαγακαμαυαφγαγμγοδοεγελεξεςεσευημητθεθμιμκτκόλήλίλαληλι"
     u"λλμάμήμημιμμμπμόνενηνινωοίολπλπόράρέρίρερηρχσασισμσυτάτωτόυμυνυπυρυσυτφάφήφαχοχρωσόν"
     u"όςότύ ύνών"},
    {10, u" ά ράδάράσέγέλέρέςέσέτέχήκήμίηίτίωαίαδαθβαβογίγεγκγωδηεδεκεμεωεύηκηρθέθήθαθηθοιάιγιδ"
     u"ιειηινιριςιτιώκάκέκήκλκρλάλέλωμίμφνάνένίνόξεοδοεοθοκοτοφπάρήρυρωρόρώσίσκτέτίτυυθυςφο"
     u"ψηωγωμωςόλόμόρύμύρώσ"},
    {11, u"άθάκέξήχίζεοζεθυιθλυνσπίρτσθσοσφσύω όσ"},
};

constexpr Frequency enLetters[] = {
    {2, u"“”…"},
    {4, u"°’"},
    {5, u"—"},
    {7, u"→"},
};

constexpr Frequency enPairs[] = {
    {3, u" “s”“ ” … "},
    {5, u" °e…s…° "},
    {6, u" —e”n’n…r…t…y…— ’s’t“r"},
    {7, u" ” …c’d…e→g°h…"},
};

constexpr Frequency enPlainPairs[] = {
    {5, u" te s th"},
    {6, u" a c i sd erheinn r ret "},
    {7, u" b d f m o pa alanaratdeedenesf g isitl lengnto onorrosesttetitoy "},
    {8, u" e h l n r u wacadamasbecacechcoctdieaeceletfifoh hahiiciliokelilllom mamenandnenons"
     u"ocofoloupapeprrarisisstatrurusve"},
    {9, u" g vabagaiblbyckcrefemevexgegridieifigimk lalulymimompncnuomopotowp plpoptrmrsrtsosp"
     u"sutsueulunuputvaviwhwi"},
};

constexpr Frequency esLetters[] = {
    {2, u"áó"},
    {3, u"í"},
    {4, u"éñú"},
    {5, u"«»"},
    {6, u"¿…"},
    {7, u"¡"},
    {8, u"\u0301"},
    {10, u"©ü"},
    {11, u"°º\u0303“”→"},
    {12, u"ª·α–≤"},
    {13, u"²òŕ—−⏎"},
};

constexpr Frequency esPairs[] = {
    {3, u"ióón"},
    {5, u"añmáráá ás"},
    {6, u" «línúrítá« » áníaínñaño"},
    {7, u" ¿ úeñgúiélópás»tívíágálé énésídító ólósúmún… "},
    {8, u" ¡ » á é óbúcécícódífíiámépírósísótétóuéváácámátáxérí ímísódórúlús"},
    {9, u"démímómúnánóréuívézó¿qáfárélétícíeífíoíxómú "},
    {10, u" ía»aíaúa…bócádóe»eífáiñláléo»o\u0301o…r»sés…yú«a«c¿e¿sápígírótúaúcút"},
    {11, u"tú"},
};

constexpr Frequency esPlainPairs[] = {
    {5, u"a e o s "},
    {6, u" a c d e l p sardeeneresl lan r "},
    {7, u" m n tadalanascacicodadoelinlelonanontonorosraresesttatetoue"},
    {8, u" b f h i o q r u vacamcechd diecedetfiiaicidieioisitlimamemimoncndneompapepoprquriro"
     u"sasititruny "},
    {9, u" g yabatbabebiblbrcccrctcueaegemexfoguhahehii igilimirivllmbmpninsocodolopplpurcrdrm"
     u"rrrtscsospsut thtuuauiurusutvavevivoza"},
    {10, u"nu"},
};

constexpr Frequency etLetters[] = {
    {1, u"ä"},
    {2, u"õü"},
    {4, u"ö"},
    {7, u"ž“”"},
    {10, u"…"},
    {11, u"š–„→"},
    {12, u"°á"},
};

constexpr Frequency etPairs[] = {
    {4, u"vävõärõi"},
    {5, u" ümäsõäiälääõnül"},
    {6, u"jäkäkõlõnäpäsütätötüähõrööüh"},
    {7, u"külälürüsätõäeäsätõpõtörükümünüpüsüü"},
    {8, u" ä “ežhämõnüpõäbõhõsõuötügži“ ” "},
    {9, u" õdühõhüjõnõpöpüräs”ädägämänäpõeõlõõölönü übür"},
    {10, u"aõb”rõvöäoävõmövüd"},
    {11, u"iõiüuõõjö ödököpüt… "},
    {12, u" š – „ →a…mömüä õdõvöaüaši– → "},
    {13, u" ° öd…eüfäuü° äkõbüe"},
};

constexpr Frequency etPlainPairs[] = {
    {5, u"e "},
    {6, u" k s va ald i inislimis sesttausva"},
    {7, u" a e l m p taaadamasatdadedieeeleneresidikilimitkakokskulemandneonoorisasisut tetitu"
     u"udut"},
    {8, u" f j n oaiakanavb eaedeiekemetgaiiirjakil laldlllolumen nanintnuolorpiraretsu uuvi"},
    {9, u" d h i r uabahajaraubaduegevfagegiguhehihtigioivjuk kektltmuo ogohomospapepor rgrjro"
     u"rtrvsosstmtotrulumunuruvv vevo"},
};

constexpr Frequency faLetters[] = {
    {3, u"ای"},
    {4, u"تدرنهو"},
    {5, u"بسشمک"},
    {6, u"جخزفلپگ"},
    {7, u"حصطعق\u0654"},
    {8, u"«»،آذچ"},
    {9, u"ضظغ"},
    {10, u"؟ئثژ…"},
    {11, u"أ\u064B\u0651۰"},
    {12, u"؛\u064F۱۲"},
    {13, u"\u064E\u0650۳۴۵۶۸"},
};

constexpr Frequency faPairs[] = {
    {5, u"ه ی "},
    {6, u" ا ب د م ن پ کا اناید ر ن "},
    {7, u" ت ر ش وادارازامبابربهت دادردهراردروز ستم مامیندنیهاه\u0654ه\u200Cواوی\u0654 یایدیر"
     u"ین\u200Cه"},
    {8, u" ج ح خ س ف ه گ یاباسالاهب تنجادندیرسرهریزیسیش شاشتشدل لینانشنمنوو ودورونپرپیک کاکرکن"
     u"یشیکییی\u200C"},
    {9, u" « آ ز ص ع ق» ، اتاخاشافتاتخترتفتهتوتکتیت\u200Cحاخاخهخوخیرنساشنشوش\u200Cف فافتفرقالا"
     u"متمهموم\u200Cنتنهنگهمهنهیوجوشولپاکلکهگاگرگزگییسیفیم\u200Cا"},
    {10, u" ذ ل چs»« اجاطاعاوبیتبتصتغتقتمجدجرجوحذخ ختخرخشخطد،دددسدوذاذخذفرترشرفرگزازمزهس شکشیصو"
     u"ط ظیع عاغیفهفیقطلومحمرمنمکنجنظن\u200Cهدهرههوزوسکسگذگشگویتیجیلیهیویگ\u200Cت\u200Cخ"
     u"\u200Cد\u200Cس\u200Cش\u200Cن\u200Cو\u200Cک\u200Cگ"},
};

constexpr Frequency fiLetters[] = {
    {1, u"ä"},
    {4, u"ö"},
    {6, u"”"},
    {7, u"“"},
    {8, u"…"},
    {11, u"©°×—"},
    {12, u"→"},
    {13, u"–≤"},
};

constexpr Frequency fiPairs[] = {
    {3, u"tää "},
    {4, u"äyää"},
    {5, u"kälämänäsäväälänär"},
    {6, u"jäpärätöyöähäiämätäv"},
    {7, u" äiääkäsönös” "},
    {8, u" “ ”däkölös”äjäoäpö ököpötöy“ "},
    {9, u"eähänöäeöiölöö… "},
    {10, u"iöpöröyääaädöhömöä"},
    {11, u" ©a…© öjöo"},
    {12, u" ° × —i…n…° × ä…öaödöröv— "},
    {13, u"aädöe”e…n”o…s…t…vö"},
};

constexpr Frequency fiPlainPairs[] = {
    {5, u"a n "},
    {6, u" k s t veneti inisitsttatetitt"},
    {7, u" a e l m o paaaialanasate eliekakolalelillnto oionoss sesit totuusvavi"},
    {8, u" h j n rakarauavdedoedeeeiekereshehtiiikilimioirjajokekikkkskulolumamemimunaneninnol"
     u"orotpapirarisasstyu ukulunuoutuuvoyt"},
    {9, u" b d f i u yamapd dadiemhahdiaidivjelkltnknonsnuodohokomoooppeporerjrkrosksosutsudui"
     u"uruvvey yhys"},
};

constexpr Frequency frLetters[] = {
    {1, u"é"},
    {3, u"’"},
    {4, u"\u00A0àè"},
    {5, u"«»ê"},
    {7, u"âçîô…"},
    {9, u"ùœ"},
    {10, u"°û"},
    {11, u"©ïü–—"},
    {12, u"ºë→"},
    {13, u"≤"},
};

constexpr Frequency frPairs[] = {
    {4, u"déré"},
    {5, u" à ésétéà é écéeérés"},
    {6, u" «d’lél’ménépétè\u00A0 » èréfélémépétêt’a"},
    {7, u" » êhéièiés\u00A0uévé\u00A0»« «\u00A0èmètédégév’e’i"},
    {8, u" \u00A0aîcée\u00A0fégélèmèmên\u00A0n’rètâxéâcèsénéoêmîn’o’u’é… "},
    {9, u"cènçnêoîrôs’u’yéçaçoéaébéqééîtôlôt"},
    {10, u"açdèe…hèjàl\u00A0nœoùr\u00A0rçrês…t\u00A0têtôuêvèzéçuègèlènèqéjéuù œu’h"},
    {11, u"côc’eçgèhôsè\u00A0a»\u00A0ècèdéié\u00A0ôn"},
};

constexpr Frequency frPlainPairs[] = {
    {4, u"e "},
    {5, u" ds "},
    {6, u" c l p sdeenereslen ntonr ret ti"},
    {7, u" a e f m n t ua anarcechcoetfiieinioisl lalimeneoupaqustteueurut"},
    {8, u" i o r vacaialasatauctd dadiecelemeugehei iciliritmandnonsomorpepoprrarirorsrtsesiso"
     u"sstatru unusve"},
    {9, u" b g qagamapavblc cacicrdodueaexfafffognhahiidifigimiqivlllolum mimmmompnancninnnuo "
     u"ocoioposplptrmrrsasutotsttuiulvavox "},
};

constexpr Frequency heLetters[] = {
    {3, u"וי"},
    {4, u"בהלמרשת"},
    {5, u"אדחםנעפק"},
    {6, u"גטכןסצ"},
    {7, u"זך"},
    {8, u"־ץ"},
    {9, u"ף”„"},
    {12, u"’‚…"},
    {13, u"\u05B0\u05B8\u05BC׳״“"},
};

constexpr Frequency hePairs[] = {
    {5, u" הה ת "},
    {6, u" א ב ל מ שותיםל ם ר "},
    {7, u" כ נ ע ק תאואתו ובורי יויייתמון ניקורורישישל"},
    {8, u" ו ז ח י ס פ רא איב בוביברגיד דיהוהמהשהתודויולוןונח חיט טיידיהימיניקירישך לאלהלולימי"
     u"מסמעמשמתנהנוע עלפרץ צוציקירתש שושמתותיתמ"},
    {9, u" ג ד צאחאלאמאפבהבחבמבעבץבצבתג גדגודאדודלדרהאהגהההיהנהעהפהצהקהרואוגוווחוכוםומוסועופוצ"
     u"ושזוזרחדחוחלחרטויאיביחיטיליןיצכוכיכלכתלבלטלמלפלשלתמאמהמחמנמצמקמרנגנתסוסיספעבעועיערף "
     u"פופיפעפשפתצבק קברהרששהשנשרשתתחתןתקתר” "},
    {10, u" „אהאםארבאבלדעדשהזהחהכהסוטוקזהחתיכיסיפכבלחלךלקמטמןמפס סטעהעתפלצגקהקטקלקסשםתאתז„ "},
};

constexpr Frequency hrLetters[] = {
    {2, u"čš"},
    {3, u"ćđž"},
    {4, u"”"},
    {5, u"“"},
    {6, u"„…"},
    {9, u"°ô‑–—"},
    {10, u"îȏ"},
    {11, u"×→"},
};

constexpr Frequency hrPairs[] = {
    {4, u"či"},
    {5, u"ačažeđičišućučćeštžeži” "},
    {6, u" ć “ećešočošožržs”ćaćičačečkčnđešašiškža“ "},
    {7, u" č š ž „ađašečežoćođršušužćnćuč čuđađiđušežn… "},
    {8, u" ” …ićć čjš šn„ "},
    {9, u"aće”ižjšžu"},
    {10, u" ° —a”a…e…iđkôu…° ôdčlšlšuščžd— „p"},
    {11, u" –f‑i”kȏlînčpćrčr”s“îkćočvšošćž žbȏd– „i„k„s"},
    {12, u" ×g”kšk…pšp‑t”u”× šcžjžmžo‑ “i“n“o“p“s„n„o"},
};

constexpr Frequency hrPlainPairs[] = {
    {5, u" pa e i "},
    {6, u" o sanjepoprrareristu "},
    {7, u" d i k m n u v zatavdaenijikisitjakakolimananeninjnoo odorosovtatetivaza"},
    {8, u" a b r tadajakalarazcid dedidndoedekelemeretiminirivizj jukelaljlom memoogojomonopot"
     u"pirorus saseslspt totrukvevivo"},
    {9, u" f g j labacamapasbibobrdresg grguicidiljik kiklkulemimjn ntnuobokolozpar sisktvunup"
     u"urusutvlvnvrz ziznzv"},
};

constexpr Frequency huLetters[] = {
    {2, u"áé"},
    {3, u"í"},
    {4, u"óöő"},
    {5, u"ü"},
    {6, u"úű”„"},
    {8, u"…"},
    {10, u"–"},
    {12, u"©°×→"},
};

constexpr Frequency huPairs[] = {
    {4, u"ásés"},
    {5, u"tátéálít"},
    {6, u" ékékölálévázázéáténéró ő "},
    {7, u" á „eáfálílólőmáménánérárésásésítótövézíájánárégékélépétölörözül” "},
    {8, u" ö ú ücídádédőgéiójákülömónípápérürős”títőzózözőábácágámávévímíníródókólönösövújüz„ "},
    {9, u"bábődídófügáháiákákíkólünőrórösővízüáhákázé édézívóbötútügőkőlősőtővű … "},
};

constexpr Frequency huPlainPairs[] = {
    {5, u" aa "},
    {6, u" e k m se egelenetk les szt "},
    {7, u" b f h l n t valanatazbeekeresezgyhai injekel lamen nentorresasetatez ze"},
    {8, u" c d i p radakaparasbacsd deemfefog hehoikiskakikolillltlym manandninyokolonosozr ra"
     u"rtsosstitottvavey yezt"},
    {9, u" g j oabagamb bbcidadoehejevgagegjidilimitjajlldlmlomimoncngogomotp papepoprrirosist"
     u"thtstuulumusutvivozaziznzo"},
};

constexpr Frequency isLetters[] = {
    {2, u"ð"},
    {3, u"áæí"},
    {4, u"óöúýþ"},
    {6, u"é"},
    {7, u"“„"},
    {10, u"°"},
    {11, u"–—”…"},
    {13, u"×‘→"},
};

constexpr Frequency isPairs[] = {
    {4, u"aðiðð "},
    {5, u" á í þráá í ða"},
    {6, u"eðjárðálærðiðuþe"},
    {7, u" úfæhæjólýmösýtævíátægætðsóðölörútýn"},
    {8, u" ó „bæbújökólálælímánúnýoðrærésæsís“títótöuðvæyðáaáfámárásækæsæðétílímíníððgðlðmðrók"
     u"ónótögöpöðú úaúnúrýrýsýtþaþjþú“ „ "},
    {9, u" öbódífögðgöhálélólömórósétývöákánáðæiéríkítíuðbðnðvógórósöfökönýjþvþá"},
};

constexpr Frequency isPlainPairs[] = {
    {5, u" sa r "},
    {6, u" a e m vareri ilinstt tati"},
    {7, u" b f h l n talaneieng gairisitkil lalilllum myn nandngninnrarirks sktttuu umunurviyn"},
    {8, u" d g o r uafagamasd dadiduefegekeleteyfygegigujakakkkrldlemameminsnuorpprerusasetetr"
     u"vaveyr"},
    {9, u" i k pakataubibremesf fafefiflfnfofrggglgngrhahehligk kekjktkulfljlsltnontogotp pape"
     u"pipurlrsrtsisjslspsstjuguputyt"},
};

constexpr Frequency itLetters[] = {
    {1, u"è"},
    {2, u"à"},
    {4, u"«»òù"},
    {6, u"éì…"},
    {8, u"°"},
    {9, u"–—"},
    {10, u"→"},
    {11, u"×"},
};

constexpr Frequency itPairs[] = {
    {2, u" èè "},
    {3, u"à "},
    {4, u"tà"},
    {5, u" «iùràuò« » ò ù "},
    {6, u" »s»"},
    {7, u"héiàiòé ì … "},
    {8, u"sì"},
    {9, u" °a»a…e»e…lànùo»o…° "},
    {10, u" à – —dàdìi»i…néoè«a«c«i«sàn– — "},
    {11, u"iè«m«r"},
    {12, u" ×a→e→g°hèl»oép»p…r»ròr…t»t…u…«b«d«e«g«l«n«o«t× à…→f"},
};

constexpr Frequency itPlainPairs[] = {
    {5, u"a e i o "},
    {6, u" a c d i p sdierinonreto"},
    {7, u" e f l m n r t ualanaratcacodeelenesilioitl lalelillmen nanenontorrarisesisttatetizi"},
    {8, u" o vamasazcechcid dadoetfigiheiaicimislomamompndniolomospapepoprqur ros sascsosst tr"
     u"ttunutvavevi"},
    {9, u" b g qacagbicccrecedegemezfoggidieifigivizltmincngnsnunzocodogopotpirmrrrtspsuthtuua"
     u"ueuluruszazz"},
    {10, u"abapefibumvo"},
};

constexpr Frequency jaLetters[] = {
    {5, u"。すにのるをー"},
    {6, u"、いがしたてでとなはまれイストルン"},
    {7, u"かきこさりァクシッデドフプマラリ定"},
    {8, u"あうくせそっつみもよらアィォオグコジセタテバパブムメョレロ使合場字指数文用行"},
    {9, u"えけだばめわんウェエカキケサダチポモュ一以作値入出前力動名変実対時書最示能表設"},
    {10, u"おじずちどびへべやザズソナネビピベペャユワ上下中付保信先全内分切列加効単参取可号同在報大存完常式引形後必情意成択換新方更有正無照現理生番的空終続置要記読込送通選部開間関"
     u"除"},
    {11, u"「」むろニヘホボミヤ・不与了他位例個像再処初別利制削割化区受各含告呼回囲境外始子小展度当得応性所持接整明期末果検標機次法準点特環画目直移端範索組結縮義者自補複見視解認語"
     u"起返述追連適長限際集音"},
    {12, u"々ぞほゲゴツハ両互代任体何供修側元共刻印向味問圧域基多失容少属履幅張待御態戻手扱拡提操改敗日替本構様権止歴残求決注消渡状略異発白相省知確秒算素細編色装規覧言計許証詳説調"
     u"識転進配量録降非項順頭題高"},
    {13, u"“”ぎぐげごづょガゾノヒ並乗予事二人仕仮件伸似低依価便係倍停備優刷去反古右否周員固型声宛密尾左幕平強影復想押括挿探推描断既暗未条来析格業殊段比波演率由界真短砲種立符第等"
     u"答管簡納経絡統継線繰考致般船艦良訳試話警象負質身辞近速造遅過違釈重門閉電面響須領類"},
};

constexpr Frequency koLetters[] = {
    {5, u"니다이"},
    {6, u"기는로를습시에오을정지하"},
    {7, u"가디리메모보사서선수스어없용으은의인일자택트파한할합"},
    {8, u"“”경고그나내대더데도동드레력록만면목미본부비상색설성세소실아않요위음입있작장재저전제주중치크터표프해화"},
    {9, u"간값개거것게계과구까단되된든들때라래러려류른름림마명무문바버변복분새생션속식십업여역연열영우원임적조창처최추출코클키패폴플필항했행현형호확환활"},
    {10, u"각감같검겠결공관근글너널누능달당될됩두또락람랙루르릭립링막말못및반받방배번볼불브블삭셀신안알야었올옵와운유읽잘젝져준줄증직진집쪽참찾채체초축타태텍통티페편포함효"},
    {11, u"…강격길김꾸끌끝날낸낼넣네노녹높놓뉴답덱듈딩따램렉령료맞매밀발백범법벨붓붙샘석셋송순쓰암압았약양언예옮완왼움워율절점접존종질취커컬테템토투특퍼품피픽허헤후히"},
    {12, u"건곡교권규금급꼴꿀꿉뀐낮냅느님닙닫독돌됨뒤듭등떤란량런럼렌렬뢰룹린릴많맨머먼몇물므믹밍베별봅빈빠숨싱쓸앞애얼엔엽외울웨응잠줍즈짜째차첨청카캐캡컨컴콘킷튼팔평폭향혼회휴"},
    {13, u"°갈견곳광균긴깁남넌년놈눌늘늬닌덮뛰랜럭렇롤롭륨릿맥맷멀며벤뷰빨삽손쇄쉬쉼슬심싶앱였온웁웃월웹윈잡족좋좌즉즘짧착첫춤충측칙칠침칩캔케콜큰큼킵탐탬탭턴털튜펙풀험획흐"},
};

constexpr Frequency ltLetters[] = {
    {2, u"š"},
    {3, u"ąėįų"},
    {4, u"ž"},
    {5, u"čū“„"},
    {6, u"ę"},
    {8, u"…"},
    {9, u"–"},
    {11, u"°—"},
    {12, u"→≤"},
    {13, u"×α”"},
};

constexpr Frequency ltPairs[] = {
    {4, u"ą ų "},
    {5, u" įašišiųį "},
    {6, u" š „ažlėmątąčiė ėsėtšiškštži“ "},
    {7, u" žbūdėdžešjąkąkšmėnėnįrėsąs“tėtųužėjėlę įrįvš šašyūržy„ "},
    {8, u"iąičiūjųkųląlįlųmųnąnčnęnųrąršsųtįtūvėąršmšošsšvščūsūtžd"},
    {9, u" “ačbėdądįdųežgąjįjūkėlęočpėrųržtętšvąvųąjąsėdėkėmėrįdįjįkįsįtšešlšršušąšįųsžežo… "},
    {10, u"gūkūrįrūučušęsžažnžpžv"},
};

constexpr Frequency ltPlainPairs[] = {
    {5, u"i s ti"},
    {6, u" k n p saiasino pararita"},
    {7, u" a d i r t va alamanarataue eieneriaieikimisitkakikolalimananinkntossisttetouous"},
    {8, u" b e f g l madakapavdadidodyekelesetgaidijilioiriujakeklksktkulememonengnuodojomonor"
     u"otpepiprr rerortskspsutrtutyu ukurutvaveviyt"},
    {9, u" j ubacid duemepfafogigripjejijojulolumimundnookp plpormrssaseslt udujumunvyykymyr"},
};

constexpr Frequency lvLetters[] = {
    {2, u"āē"},
    {3, u"īš"},
    {4, u"ņ"},
    {5, u"ļū"},
    {6, u"ž“”"},
    {7, u"ģķ"},
    {8, u"—"},
    {9, u"…"},
    {10, u"č"},
    {11, u"°"},
    {12, u"–→"},
    {13, u"×"},
};

constexpr Frequency lvPairs[] = {
    {5, u"rātātīvēā ētītša"},
    {6, u" š “dīkākšlālēmēnāpātēādārāsātējēlērēs” "},
    {7, u"bādēiņjālīmāošpērērīsēs”zēzīācājākālāmē ēšībījīmņušiūt“ "},
    {8, u" āaļaņašbūdāeļešežjūkļnēnīsāsīsūvāānēcēgēmī īdīgīkīvķiļaļuļūņaņeņoš šošušāšīšķūdūs"},
    {9, u" — ”bīcīgāgšiģlūpīrštļtņtūuļzāzņāņāšēdģēīcīsīššršsšēūržī— "},
    {10, u" īeņģi… "},
};

constexpr Frequency lvPlainPairs[] = {
    {5, u"ies "},
    {6, u" a i k p s va asati stt u "},
    {7, u" d l m n r t uaianaraudaekenesetinisizjajukakslalimananenoo otpapir rasatatitotuumva"
     u"vi"},
    {8, u" b jadakalamapcidedidze eielemerevidijikilirkoktkulelum memsmunintonorosprrerirsrtru"
     u"sksltetrtsunurusuzvez zv"},
    {9, u" c e f g oabavbaced dodredfifogagrimitjoklkrlomin ndnuodogojokomopp plrmrosesispsutn"
     u"ttudukulzizm"},
};

constexpr Frequency mkLetters[] = {
    {3, u"аеио"},
    {4, u"нрт"},
    {5, u"вдзклмпс"},
    {6, u"бгуј"},
    {7, u"жцчшњ"},
    {8, u"ф"},
    {9, u"ќ“„"},
    {11, u"хѓ"},
    {13, u"џ"},
};

constexpr Frequency mkPairs[] = {
    {4, u"а "},
    {5, u" пе и "},
    {6, u" д н сатдаканао попрраретате"},
    {7, u" в г з и к оанвавоеденетзаиситколелименениоводоротристт титоувја"},
    {8, u" а б е л м тавадакаламарачајањвевивргод дедоекемеризикиниријким мамон нооноспаросесо"
     u"циј ње"},
    {9, u" р у ј „ажапацбабебибобргагиглдидндрдуелесжежизбзиивидилимиоишктлалнломинднтогожозок"
     u"оломопојпипкр сасискслсптвтртуурчечиштќе“ "},
    {10, u" ф ч ќааабазасашв внвтвугребевегезецечешжажузвзнзоигиеииицичк клкркскулунуобоиоцочош"
     u"пердрзрмртруршс снтктнтсу умучфифоцечушашешишкња„ "},
    {11, u" шs“аггудбдгдмеиепењз змипифкнл нкнснфплрвржрнрссмтпупусч чачкчнчош ќа"},
};

constexpr Frequency nlLetters[] = {
    {2, u"‘’"},
    {3, u"ë"},
    {4, u"éï…"},
    {5, u"ĳ"},
    {6, u"©°´äó"},
    {7, u"ö—"},
    {8, u"→"},
    {9, u"è"},
    {10, u"×ü–"},
};

constexpr Frequency nlPairs[] = {
    {3, u" ‘‘ ’ "},
    {4, u"iës’"},
    {5, u" ’eïërïn… "},
    {6, u" éeën…énéé"},
    {7, u" ©e’län’wĳ© ° ´sätë ënïm‘a’s"},
    {8, u" ° —aïa’o´oöo’r’vévóëiëlëxïeóróóörĳdĳz— ‘s‘t‘v"},
    {9, u"a´c’d’d…g’lĳm’oëp’r…tĳt’t…y’é ëeëfĳs‘b‘c‘d‘m‘n‘o‘r"},
    {10, u"bèbĳd´g°k’k…l’n→p…rĳs‘s…ètĳlĳn‘e‘f‘g‘h‘i‘l‘p"},
    {11, u" ´ × – …b’d→eéeüf’hĳi’w’zĳz’× ésüpĳ ĳfĳv– ‘k‘w‘z’g→ →b"},
};

constexpr Frequency nlPlainPairs[] = {
    {5, u"e enern "},
    {6, u" d vandeeegeinr s stt te"},
    {7, u" a b e g h i m o s t waaalaratbed elesetieijkelemendngonoooporrdretativevo"},
    {8, u" c k l n p u zchcoctdadiecegekg heisitk l lalillm mananeninsntoeomp perarirortscseto"
     u"uivawe"},
    {9, u" f ra acadafagakamapasbibrdoebedeiemeuevezf fogrhahticidigikilkakoldlolso ofoloupapl"
     u"prrgrkrmrsrusislsptrtsttu urutwawiwozezi"},
};

constexpr Frequency noLetters[] = {
    {1, u"å"},
    {2, u"ø"},
    {3, u"«»"},
    {5, u"æ…"},
    {8, u"©é"},
    {9, u"İ‘’“”"},
    {10, u"°–•→"},
    {11, u"\u00A0—"},
    {12, u"≥"},
};

constexpr Frequency noPairs[] = {
    {3, u"å "},
    {4, u" « åpå» ør"},
    {5, u"føs»tø« øy"},
    {6, u" …håhøjømånårårøvæådånåpårærøkøm… "},
    {7, u" » øgålålømøsåsøålåtølønøtøv"},
    {8, u"e»fånøpøvååeåvødøs"},
    {9, u" © ébåbøjækåkøtåuø© åkåmåsénø "},
    {10, u" İ ‘ “eæl»lænær»t»«a«f«s«t«vøpİ ’ ” "},
    {11, u" ° – •a»c»d»g»g…m»mæn»o»p»r…s”«b«c«d«e«h«i«l«m«n«p«r° åføf– “ • "},
    {12, u" — →døf»fæk»sæs’«xågér— ‘s→ "},
};

constexpr Frequency noPlainPairs[] = {
    {5, u"e enerr "},
    {6, u" f sdeetilinn restt te"},
    {7, u" a b d e i k l m o p t valanaratd elfog geiskel lelillmendnengnnorris setatittvevi"},
    {8, u" g h n ua asavdadiedekesfii idigikjek kakkkokslaldlgm mansntogomonoppepprartsisksout"
     u"v va"},
    {9, u" ragakamapbeblbrdrduegemfefrgngrgsheitivjokrktkulolsltmmnaninknoodokolosp papoprrdrk"
     u"rmrorsrusjslspsstotrtsu ukulun"},
    {10, u"gjlypi"},
};

constexpr Frequency plLetters[] = {
    {2, u"ł"},
    {3, u"óąęśż"},
    {4, u"ć"},
    {5, u"ń"},
    {6, u"\u00A0ź"},
    {7, u"”„"},
    {8, u"…"},
    {11, u"©ů—∶"},
    {12, u"°íü\u2009→"},
    {13, u"×đ"},
};

constexpr Frequency plPairs[] = {
    {5, u"ałięośówą ć ę łaśc"},
    {6, u"aćeśeżjąożróużyśącędł łoślżeży"},
    {7, u" ś żażdłgłiąkónąołsąsłtótęwłyćyłzązęórądęcępłułyłąń śwśćż żn"},
    {8, u" ł „ańbębłdźełeńgóićiłiżjęjśkękłmóońpórętłw\u00A0ękętłełóńcś śnżażk” „ "},
    {9, u"aścądągąi\u00A0iśkąląnęo\u00A0pępłsós”tąułwówąwęz\u00A0zł\u00A0póbócódółóżągątązłkłn"
     u"łęśmśrźnźwżdżlżożsżą… "},
};

constexpr Frequency plPlainPairs[] = {
    {5, u"e "},
    {6, u" p s wa ienio st"},
    {7, u" a c d i j k m n o t zanchczdoeneri iajekolinaodonorowpoprrarorzs szt tatou w wawiwy"
     u"y zazezy"},
    {8, u" b l r uacadakalamarasatawcicjd dadzecedegejekemesetgoh icikinisj jak kakilalem mami"
     u"mon nenontnyomosr resitetrtyycysz zizn"},
    {9, u" e f gajapazbic cecodeelg heioktkul lnlolumeobocokolopotozpapiplryseskthtuujuswewoym"
     u"ywzo"},
};

constexpr Frequency ptLetters[] = {
    {2, u"ãç"},
    {3, u"áé"},
    {4, u"í"},
    {5, u"êóõú“”"},
    {7, u"àâ…"},
    {8, u"ô"},
    {9, u"º"},
    {10, u"ü—"},
    {11, u"ª°→"},
    {12, u"©α–≤"},
    {13, u"\u00A0−"},
};

constexpr Frequency ptPairs[] = {
    {3, u"ão"},
    {4, u"aççã"},
    {5, u" énãé õe"},
    {6, u" “eçiçrásãsítáá álárçaçõídív” "},
    {7, u" à ácêiámánçnínúrãrês”uçváçoê ênórúm“ "},
    {8, u" ú ”aícécóeúmémópápçrósósõtãtétóuívíà ágásátáuávânélémérícó ódúdúl… "},
    {9, u" íbécídádêháiãjámínápórçrésátíuáuêvéáfáxâmédésêsínísítópósót"},
    {10, u" º âcçlálímúnâo…pôrârítâtêtõº ápã éiétífírónóxúnús"},
};

constexpr Frequency ptPlainPairs[] = {
    {5, u" da e o s "},
    {6, u" a c e p sardedoeresr ra"},
    {7, u" f i m n o tadalanascacodaelemeninislim mamenantonorospapoqurerirosesttateto"},
    {8, u" b l q r u vamatcidiecexfiiaicidimioiritl lalelomompndnonsompeprsasstitrueumvavevo"},
    {9, u" g habacagaicechcud edefegeietfafefogeguhahehoi igilivizlhltlumincnenhniocodolouovrm"
     u"rrrtscsisospsutuu uauiulunurusutviza"},
    {10, u"brcrifpl"},
};

constexpr Frequency roLetters[] = {
    {1, u"ă"},
    {3, u"îșț"},
    {5, u"â”„"},
    {7, u"ţ"},
    {8, u"ş…"},
    {10, u"°—"},
    {11, u"©ó"},
    {12, u"×–\u202F→"},
    {13, u"‑"},
};

constexpr Frequency roPairs[] = {
    {3, u"ă "},
    {4, u" îtăînți"},
    {5, u"ațcăișzăși"},
    {6, u" ș „eșețlămănțrăsăărșt” "},
    {7, u"câcțdăgăițnăpăs”ânăsătșa„ "},
    {8, u" ”așpțtâvăăuățţișețațeță"},
    {9, u"băe”fămâoșrârțuăuțâmârâtîmămşișu… "},
    {10, u" ş țaţbțcșeîeşişlțnţușvââlăcălăpșo"},
    {11, u" ° —a”eţe…fâiţpâpţrșt”zâ° îlăiăzășştţăș șcțu— „a„c„d„p„r„s"},
    {12, u"cócţc”dâi”i…lâoțr”sîâiâșî ópă”ă…ţașn„m„t"},
};

constexpr Frequency roPlainPairs[] = {
    {4, u"e "},
    {5, u" dre"},
    {6, u" a c p sa aratdei ntstteul"},
    {7, u" e f i l m nacalcacodieaeceleneresfiicieiliminitl lelilumamen orper rariruset tatitr"
     u"u un"},
    {8, u" o r t u vanasauazcecictcud dafoisizlalomimpnandneninuo oaonospoprros sasitotuuiurut"
     u"ve"},
    {9, u" b gabadagaiajapbic chcrdoduedeiemetexgegihiiaidifiiioiriuivltm momuncnonsocodolomop"
     u"p papiplpurmrtscspsuuaumvaviza"},
};

constexpr Frequency ruLetters[] = {
    {3, u"ео"},
    {4, u"авинрст"},
    {5, u"дклмпу"},
    {6, u"бгзйчыья"},
    {7, u"жхшщю"},
    {8, u"фцэ"},
    {9, u"ё"},
    {10, u"«»"},
    {11, u"ъ"},
    {12, u"—"},
    {13, u"…"},
};

constexpr Frequency ruPairs[] = {
    {6, u" в н п са е ени нио стя "},
    {7, u" д и к оанатв ваеретитй какоменаненооволотпопррарерот татетотьь "},
    {8, u" б е з м р т у чавазакалвевивовыгодадедоеведелемесжезаиеизийиминисияк килалелилольля"
     u"м мамоннныобогодойокомоноросрискслсосятвтитру х чещеы "},
    {9, u" а г л ф эадаеайамапарасачащаябебобрбывлвсгедидлдндуегееейекжизнзоивикилирйлкркткул "
     u"люмин нтоеожозопочпапепир рурыс сесисптсудусфацичачичтшиыеыйыхьнэтю "},
    {10, u" « ж х ц яабагажахацаюбаблбувгвквнврвугагдгигрд дрежезечжджнз звздзмибидииихицичиюйс"
     u"кеклкслумнмумынднснуньняоиошплпурмрнртсасвсссусьтктнтутыуеужукумупурутучуюфифохоцечн"
     u"шещиывымытьзькьсютючющяеят"},
    {11, u" ш» бибщвтг глгудвдыебеоепешещжазизузыиаигиоипишйткнлнлымяооохоцоярвржрсрясмснсыугул"
     u"ущфехрцашащаыбыдыльтьшён"},
};

constexpr Frequency skLetters[] = {
    {2, u"á"},
    {3, u"íť"},
    {4, u"éúýčšž"},
    {5, u"ľ"},
    {6, u"óô“„"},
    {7, u"äň"},
    {8, u"ďĺ"},
    {9, u"…"},
    {10, u"\u00A0"},
    {11, u"—"},
    {12, u"–"},
    {13, u"°˚→"},
};

constexpr Frequency skPairs[] = {
    {4, u"ť "},
    {5, u"iťnáráé "},
    {6, u"aťnénínýožsúvýá áví ú úbý čiži"},
    {7, u" ú č š „ačdáečeľjúlámánúočrísťužvézáácálánárátázéhímýcčačeľašeštže“ „ "},
    {8, u" žežhľkámôoľošpírýs“tátétítývávšzíámásíkírísítívôžúcúčýbýmčnčíľkšišížkžnží"},
    {9, u" “ažeňešičkékókýlínčnšrérčsásítúuávíyťádémérícódúlúrútúťýsč čkčoľbľošaťaž žd"},
};

constexpr Frequency skPlainPairs[] = {
    {5, u" pa e "},
    {6, u" n s v zenienio ovpoprrestu "},
    {7, u" a d k m o tadancheri iajekolonaneodorrarirotatetitov vay "},
    {8, u" b c f h i j r uakalamarasatavazbobrcid dadedidndoedekeseth hoinitk kaktkukylalelim "
     u"memonoobokolomonosotouozr s saspt trtuvevivovyzazo"},
    {9, u" eacahajbabeceebejelhricidikilimisj kll lnmamimun ntnuopp paplrtrusisksltntvtyudujul"
     u"uputvnybzn"},
};

constexpr Frequency slLetters[] = {
    {1, u"č"},
    {2, u"š"},
    {3, u"ž"},
    {4, u"«»"},
    {7, u"…"},
    {8, u"–"},
    {9, u"°"},
    {10, u"→"},
    {11, u"‘’≤"},
    {12, u"×α−"},
    {13, u"é"},
};

constexpr Frequency slPairs[] = {
    {3, u"oč"},
    {4, u"čačeči"},
    {5, u" » čačečičišož« » čnšižežižn"},
    {6, u" š žažežjšošs«učšaštšč"},
    {7, u"ešnčč čjčkčočušeža"},
    {8, u" « …ašižrčušužzščlčrškšlšn… "},
    {9, u" –a«e«lžršzčšužj– "},
    {10, u"i«o«ržt«° »i»n»o»p»s»všjšožl"},
    {11, u" °bčdšj«k«lčn«p«r«»d»g»m»r»zš ž žo"},
    {12, u" ‘a→b«c«d«dčh«l«nšnžs’t≤v«»a»b»e»h»k»l»u»čžbžk‘ ’ ≤t"},
    {13, u" × αdžg«m«mču«vč»c»fα →p"},
};

constexpr Frequency slPlainPairs[] = {
    {5, u" pa e i "},
    {6, u" n s vanjenanio poprrarestte"},
    {7, u" d i k m o zavdaedenikitjakakolilomenenjnoodorosovrititov vaveza"},
    {8, u" a b j r t uajakalamaparasatazd dedndoekelemeretevezgoilinisizj k kelaleljm mamon ob"
     u"ogokolomotpiros seskslspt tatrvivnvo"},
    {9, u" g labadbebibobrcecididvegejesgah icihijimirivjikikll lnmionopozpar rnrssasnsotntvu "
     u"upusvrvsz zbznzv"},
};

constexpr Frequency srLetters[] = {
    {3, u"аеи"},
    {4, u"норт"},
    {5, u"вдзклмпсуј"},
    {6, u"бг"},
    {7, u"цчшњ"},
    {8, u"жфђљћ“„"},
    {9, u"х"},
    {11, u"…"},
    {13, u"©џ—"},
};

constexpr Frequency srPairs[] = {
    {5, u" па е "},
    {6, u" и н си напопррареу "},
    {7, u" д з к о уаванатањваведаензаизикиситкаколим менениноо оводорристтатетије"},
    {8, u" а б в м р т јадазакаламарајвиводедоедекелемеретивиминијкекулалеломамонуогомоносотој"
     u"росасеслсптоциј јање"},
    {9, u" г л ф „абапасачбебибобрвнврг гргуд дидндревезесешењжежиз зизнилирицичишк киклн нтоб"
     u"озоколоппапипур русвсискснт твтртуукумупутучујцечечишаштјуњаће“ „ "},
    {10, u" е ч ш ћs“агажаоацбаблв вувљгаглгодуегежеоеђећжазбзвзлзмзозуидихкркскткљл лнлундожош"
     u"ољпержрнс сусцтктнувулунурусућфафих цачачнчушешишкђејиљаљељуњући"},
    {11, u"ауађебепмиочрвртугћа"},
};

constexpr Frequency svLetters[] = {
    {1, u"ä"},
    {2, u"åö"},
    {4, u"”"},
    {7, u"…"},
    {9, u"©—"},
    {10, u"°"},
    {11, u"→∶"},
    {12, u"·×é–≤"},
    {13, u"α−"},
};

constexpr Frequency svPairs[] = {
    {3, u"ör"},
    {4, u"föväänär"},
    {5, u" äläpåtäälå ” "},
    {6, u" ö ”färäråsäägätånåt"},
    {7, u" ågåhähåhöjäkälåmånärösös”ämäsålårökömöpöv"},
    {8, u"bögägökölömämösåtövåäkådågåsödögöjölönös… "},
    {9, u"bädädåfånåtåädäfäväxåe"},
    {10, u" © —döe”r…t”© äcäpåkåvöt— "},
    {11, u"a”a…båg…jökål”l…nör”t…° åm”a”f”m”n”s"},
    {12, u" ° …d”e…g”h∶k”n”n…p”s…ä ö öc”b”d”i”k”l”p”r”t”v∶ "},
};

constexpr Frequency svPlainPairs[] = {
    {5, u"a err "},
    {6, u" a f sanardee eninlln rastt te"},
    {7, u" b d e i k m o p t valatd daeletg ilkal lalemamenandngninsntomorreris sktatitt"},
    {8, u" g h l n r uadasavckdiedfigagei idigiskekoktlim neonpapprtsasetrutv vavevi"},
    {9, u" cagakamapbebibochdddrduekesexfofrgrgsh haicikioitivk krldljlnltlumimmmpnnnvocodogol"
     u"p pepoprrdrgrkrmrnrorsrusislsospsstotstyu umunup"},
};

constexpr Frequency thLetters[] = {
    {4, u"นรอา\u0E48"},
    {5, u"กงดบมยลวส\u0E31\u0E35เ\u0E49"},
    {6, u"ขคจตทปหะ\u0E34\u0E37แใไ"},
    {7, u"ชถพฟำ\u0E38\u0E39โ\u0E4C"},
    {8, u"ซณผภ\u0E36\u0E47"},
    {9, u"ศ"},
    {10, u"ญธ"},
    {11, u"ฉฏษๆ“”"},
    {12, u"ฐ\u0E4A"},
    {13, u"ฮฯ"},
};

constexpr Frequency thPairs[] = {
    {6, u"าร\u0E48อ"},
    {7, u" เกาข\u0E49ง ท\u0E35น ม\u0E48อง\u0E31บามาย\u0E35\u0E48\u0E37อ\u0E37\u0E48\u0E48า"
     u"\u0E49อ\u0E49า"},
    {8, u" ก ค แ ไกรขอควงเจะช\u0E49ด\u0E49ต\u0E31ต\u0E48นทน\u0E35ปรม มายกระร\u0E31ราร\u0E37"
     u"ร\u0E4Cล\u0E37วาส\u0E48หนหมหรอกอคอนอมอยอร\u0E31ง\u0E31น\u0E31ว\u0E31\u0E49า างาน"
     u"\u0E34ด\u0E35ย\u0E35\u0E49\u0E38ณเปเมเลแสใชในไดไม\u0E48ง\u0E48น\u0E48ม\u0E48ว\u0E49 "
     u"\u0E49ง\u0E49น\u0E49ม\u0E4C "},
    {9, u" ข จ ต ร ส ห อก กลก\u0E31กำก\u0E34กเครค\u0E38ค\u0E48งกงขงคงรงหงางแจาช\u0E37ช\u0E48ด "
     u"ดงดตดอตรต\u0E34ต\u0E49ท\u0E31ทำนกนดนหนเนแน\u0E49น\u0E4Cบ บบบรบ\u0E31ปลป\u0E34ป\u0E47"
     u"ผ\u0E39พ\u0E34ฟลฟ\u0E49ภามลมอม\u0E35ม\u0E37ม\u0E39มเย ยงยนยาย\u0E39รกรถร\u0E34รเละ"
     u"ล\u0E31ลาลเล\u0E48ว วนวยว\u0E48สดสาสำส\u0E35หลห\u0E31อ อบอออเอไะเะแ\u0E31ด\u0E31ตาก"
     u"าตาพำหำเ\u0E34ก\u0E34ท\u0E34\u0E48\u0E38ด\u0E39ล\u0E39\u0E48\u0E39\u0E49เกเขเคเดเพเร"
     u"เวเสแบแฟแลโฟใหไป\u0E47น\u0E48 \u0E48ส\u0E48เ\u0E49ว"},
    {10, u" ช ถ ท น บ ป พ ม ย ล ว โ ใกกกจกตก\u0E47ก\u0E48ขยค\u0E31ค\u0E49งจงตงทงมงสงองโงใงไจ จำ"
     u"จ\u0E38ณ\u0E4Cดขดทดยดหด\u0E31ด\u0E34ด\u0E35ด\u0E39ดเดใตอตาถ\u0E39ท\u0E34ท\u0E36นขนค"
     u"นตนมนรนวนสน\u0E31นานำนโนไน\u0E48บกบขบทบอบเบแป ปยป\u0E38ผ\u0E31พลพ\u0E37มกมดมตมทมรมส"
     u"ม\u0E38ยวย\u0E31ยเย\u0E48ร รณรปรมรยรรรวรหรอร\u0E35ร\u0E38ร\u0E39รแร\u0E49ล ลงลบ"
     u"ล\u0E34ล\u0E35ล\u0E49วลวอว\u0E31ว\u0E35วเว\u0E49ศนส สมสรส\u0E31หาห\u0E49อขอดอผ"
     u"อ\u0E31อ\u0E35อแอ\u0E48ะบะใ\u0E31ก\u0E31ศ\u0E31ส\u0E31\u0E48าจาดาทาวาสาเำลำแ\u0E34จ"
     u"\u0E34น\u0E34ย\u0E35 \u0E35ก\u0E35ด\u0E36ก\u0E36ง\u0E37\u0E49\u0E38ก\u0E38ม"
     u"\u0E38\u0E48\u0E39ก\u0E39ปเชเซเตเนเหเอแกแตแนแปแหโดโป\u0E48จ\u0E48ย\u0E48ใ\u0E48ไ"
     u"\u0E49ต\u0E49เ\u0E49ใ\u0E49ไ"},
    {11, u"ก\u0E49คำค\u0E37งชงผช\u0E35ซ\u0E49ฏ\u0E34ดกดพต\u0E4Cนบนอบคบสบ\u0E38ปฏผ\u0E34พรมขมนยช"
     u"รทลอว\u0E34ะ ะท\u0E31ญำก\u0E34มเทแพไขไวๆ \u0E48ค\u0E48ต\u0E48แ\u0E4Cเ"},
};

constexpr Frequency trLetters[] = {
    {1, u"ı"},
    {3, u"çüş"},
    {4, u"öğ"},
    {6, u"İ"},
    {7, u"’"},
    {8, u"“”"},
    {9, u"©"},
    {10, u"ʼ…"},
    {12, u"°–‘"},
    {13, u"\u00A0—"},
};

constexpr Frequency trPairs[] = {
    {4, u"ı "},
    {5, u"lınırısıılınır"},
    {6, u" ç ödıeçeğgöiçişrütütıçeçiönörünürğiıkışşt"},
    {7, u"açağaşcıdüeşgüiğkımınüsüyızıçaçıözü ümüzğeğıımızş şl"},
    {8, u" ü İ şdöfıgılümüpırçuğuşyüç ölösükülğlğuıcıdısıtıyığşaşişı"},
    {9, u" ’ “böbühıkülçoğoşsöyözüçbçlçoçöçüüsütüyüğüşğrİlİçıpşeşkşmşu’ “ ” "},
    {10, u"bİbıcüs”uççmücüdüçğüİ ıfşs"},
};

constexpr Frequency trPlainPairs[] = {
    {6, u" a b d k sa anare eneri ilinirlalen r "},
    {7, u" e g i o t v yakalaybidadeekelesk limamendneniolrareris sesit tatetiu ya"},
    {8, u" h m padamasatbabebudidoemeteygegiikimisizkakiklktkul lllmlum mimlnanlntnuonorosp rl"
     u"sastsyulunurveyez "},
    {9, u" c f l n r uabacapazcacecid duecedevhaheitiykekoldlgncnmokompardrmrorsrtrusotltmtuum"
     u"uty yiyozaze"},
    {10, u"bofaicidmuzi"},
};

constexpr Frequency ukLetters[] = {
    {3, u"о"},
    {4, u"авеинрті"},
    {5, u"дзклмпсуя"},
    {6, u"бйчь"},
    {7, u"гжфхцшює"},
    {8, u"щї"},
    {9, u"«»"},
    {11, u"—…"},
    {13, u"’"},
};

constexpr Frequency ukPairs[] = {
    {6, u" в з пани нао сттиу я "},
    {7, u" д к н са атвавивідое енерзаискаконениннноняовоморпорарериротаі ід"},
    {8, u" а б м о р т у ф я іавазайаламарасачбув вогодадеекз знийикимитихй кикулалелольлялім "
     u"мамемимомінтніобогодозоконоспепррітетотртутьувх чеь якє івін"},
    {9, u" л ц ч єабадакапаєбовевнвуд дидкдлдндіедемесетжезвзмивилинйлк клкркткщкілимунднуожол"
     u"опоточоюпапипір рурясискслсоспсусясіт тіудутфацічачищою ядійікілірісітї "},
    {10, u" « г е ш щ« » агажацб беблбрбівдвквлвсгагргудрдуевегежезейелжнзбзозуибизипичкнксл лу"
     u"люмкн нкньоїпурмрнртс сеснтвтктнукулумунупусучуєфофіцечншешиькьньоьсямєтізімії"},
    {11, u" жs»ахбавтдпдтжижузіидирифишйнйткелкмвмлнсншошркрсршсаурхошаштшущеьтювютючятіаібігіш"
     u"іюіяіє"},
};

constexpr Frequency viLetters[] = {
    {3, u"đ"},
    {4, u"àáư"},
    {5, u"êóôạảậếểệịộ"},
    {6, u"âãìíùấầặềọốổớờợụủử"},
    {7, u"éơắẽỉồỗởứừữự"},
    {8, u"òúýăẫằỏ“”"},
    {9, u"ũẩễỡ"},
    {10, u"«»èõĩẵẻỹ…"},
    {11, u"ẳẹỳỷ"},
    {12, u"©"},
    {13, u"°—"},
};

constexpr Frequency viPairs[] = {
    {4, u" đ"},
    {6, u"hôácôn"},
    {7, u"cácócủhưhọiếiểiệnàvàà ênó đưđộượạnảnậpể ểnị ọnộ ợcủa"},
    {8, u"bạbảbộhàháhìhấhậhểhỉiêiềlàlưlạmàmộoạsốsửtạtậànàoàyá ánã ìnùnđiđãđầđặđểđịơnư ướườạiải"
     u"ấtầnầuặcặtẽ ếnếtềuệnệuịnố ốiổiỗiộnộtớiờiở ụ ụcử ữ ự "},
    {9, u" â ả “bằbịcôcảdùdạdẫdụhâhéhíhóhạhảhầhếhịhờhứhữiảkếlệlỗmãmặmớmởmụnếoáoặrêrìrưsásẽtêtì"
     u"títùtốtừtựuốuồuộvùvớyểàiàuátâmânâyépì ìmícínònóaô ùyý ănđađếđổưuươả ấyẫnậtắtằnế ếuề "
     u"ềnểmểuệ ỉ ịcọcỏ ốnồnổ ớcờnợnụnừ ửa” "},
};

constexpr Frequency viPlainPairs[] = {
    {4, u" c tn ng"},
    {5, u"c chg h i nhth"},
    {6, u" b d g h k l m n p s va hikhm o p t tru y "},
    {7, u"angihoinphs ti"},
    {8, u" a r xe hahulionrarouyvi"},
    {9, u" f i o qaoauaybicod dadedieoghheiaidiokil luorquresateun"},
    {10, u" e u wacaialamaratb cacuecemeneresf gnhticilimitk lalelomamempndnur rgrirusesostsuta"
     u"totpttuaudutxexu"},
    {11, u" yasbabuckdoduelfifoguislsmimunsntofolpapeplpsrtsitutyv wax xo"},
};

constexpr Frequency zhCNLetters[] = {
    {4, u"的"},
    {5, u"。"},
    {6, u"一个件在文用，"},
    {7, u"不中为以使可如字定数时是有果行这"},
    {8, u"“”上下了于令会作信值入出分列则到前动包参名后命和器它对将式当或所指接本来标目示程符置能表被要设输选页项："},
    {9, u"、与串义之也些从任位何你供保元全关其内册写划制加务单发取变口只号同含启回图地多大存就已并序应建开录息您成户手执换据提改新方无显最查样格模此没法版现理生由相码空端类系组给"
     u"统编者而自解计认该请读调转过返进通部配重量错键间除面频默（）"},
    {10, u"且主么事人他代们传但例修像允具况准函创删别化匹区及合向否因址块型域处备复外夹始子安完实容导小展工常库度引形径得必态性情意打扩找把报择括持按控描操支放效整日明更替服未机条"
     u"档检次正段每比求注流消源点然特状环确种称移窗立第等素索级线结缺网色节获装见规视记许试话语误路软载辑运还连述送道那邮都释里问限需非音须高；"},
    {11, u"两二交产仅份似体依候做储先共再冲决切初刷功助协印即历压原去反受句另台史吗告响围基境增声失头套好密少层属布带帧平强待很志忽总想我才排插搜播收期权束构析某核根框案止步殊测添"
     u"清滤率界略盘直省看真着知禁秒签简算管终经络续缓缩联脚至致范补览言议访证识词译询说象败资起超达远退适链长闭随隔集预题颜验？"},
    {12, u"「」三业丢书互享什仍优低余便假偏停光免兼减几击剪十升双叫右各员哪坏够太客宽封射尝尾局屏左己希帐帮幕年延弃影循心忘快恢护斜断易映普望杠板染栏母活混照片独电画留登白盖硬磁离"
     u"笔簿约细绝继缀翻考般若覆警让详赋赖跟跳身轨较边近迟透递速避采针钮锁镜阅阻附际隐零顺额首驱"},
    {13, u"©…专东严临久乎予亮介价充八公六典利剩副占又听周味哈唯固国均塞填天媒宏寻尽崩嵌差席底异归彩思感慢截抓拖拟拥挂捕损捷掉推料旧早景暂暗月术杂柄栈树校植毫水永污波浏浮渲溃滚激"
     u"父监短私突竖站章答箱精维背花菜藏虚西角触讯论贝负质贴越足车逗造逻遇钟钥销降陷静顶风饰鼠！"},
};

constexpr Frequency zhTWLetters[] = {
    {4, u"的"},
    {5, u"。"},
    {6, u"一個在是用，"},
    {7, u"不中以使可如字定式數時有果案檔為行設這選"},
    {8, u"上下了令件位作來值元入出列到前動包取名命和器它將對引後或所指文於會本標當目示程者能號表被要訊資輸面頁項："},
    {9, u"、「」並串之也些任何你供傳內其冊分別制則劃加只同否含啟單回地執多大套始存寫就工已序建從您應成手接提換料新方最查格模樣機此沒法無版理生由發相碼空立符系組結給統線編置義而自"
     u"與裝視計許該誤請讀變路返通連進過部郵配重錄錯鍵開間關除預顯（）"},
    {10, u"“”且主事人介他代伺但例修們儲允充全兩具函刪化匹區原參及叫合向告呼問因圖址型域報增外夾好子安完容實小常度庫形徑得必性情意態把括按控描援擇擴支改放效整明更服未條檢欄次正每"
     u"比求況準然特狀現直確移種稱窗端第等算範素經網至色處裡複見規解記詢試話語譯載輯轉述送透道還那都量需非音須類體麼點；"},
    {11, u"二份似依保候偏做停備僅像先再初功務匯協印即去反受另史圍埠基塊境壓失密專尋導少尾層屬平影待很心忽息想我才找排搜播操收日映替期束析某核根業構權止歷殊段決注流清測源片物獲率環"
     u"產略盤看知碟秒管節簡級索終縮總續聲著衝補製覆言詞誌說證識議起超跟軌軟退運遠釋長閉閱限陣隔隨集順頭題首驗高？"},
    {12, u"三互交享什仍便信假免共切刷剪副割助十句右各員哪嘗夠太客宣寄寬封展左己帳帶幕幫幾延強復忘快憶戶打拖持掛插據敗斜斷易景曆框棄槓槽步母永消滑濾照獨留登白真硬磁禁筆簽籤約細絡緩"
     u"繼翻考聯致臺般若蓋覽訪註詳認調論警護讓象賦賴跳身較近迴速遞適避邊鈕鎖鏈阻附階際隱雙雜離零電響頻額顏餘驅"},
    {13, u"©‘’…丟久乎予低住佳併係偵價儘優光八公六典利剩升卻又口味品唯嗎四固圈國圾均垂垃塞填壇壞媒宏寸尺差布希年底彩往思恢感憑抓掃掉採推損擁擬擷既普暫曳書月望東板染校植概樹歸水"
     u"汙波活混減游湊滿演瀏焦父界畫異疊省瞭短稿突章答簿精絕維群背臨舊花萬藏虛螢術西角觸訂負貼質越足逗造週遇達遲邏金針鐘鑰靜頂風飾鼠齊！"},
};

constexpr LanguageFrequencies languages[] = {
    {"ar", arLetters, arPairs, {}},
    {"be", beLetters, bePairs, {}},
    {"bg", bgLetters, bgPairs, {}},
    {"ca", caLetters, caPairs, caPlainPairs},
    {"cs", csLetters, csPairs, csPlainPairs},
    {"da", daLetters, daPairs, daPlainPairs},
    {"de", deLetters, dePairs, dePlainPairs},
    {"el", elLetters, elPairs, {}},
    {"en", enLetters, enPairs, enPlainPairs},
    {"es", esLetters, esPairs, esPlainPairs},
    {"et", etLetters, etPairs, etPlainPairs},
    {"fa", faLetters, faPairs, {}},
    {"fi", fiLetters, fiPairs, fiPlainPairs},
    {"fr", frLetters, frPairs, frPlainPairs},
    {"he", heLetters, hePairs, {}},
    {"hr", hrLetters, hrPairs, hrPlainPairs},
    {"hu", huLetters, huPairs, huPlainPairs},
    {"is", isLetters, isPairs, isPlainPairs},
    {"it", itLetters, itPairs, itPlainPairs},
    {"ja", jaLetters, {}, {}},
    {"ko", koLetters, {}, {}},
    {"lt", ltLetters, ltPairs, ltPlainPairs},
    {"lv", lvLetters, lvPairs, lvPlainPairs},
    {"mk", mkLetters, mkPairs, {}},
    {"nl", nlLetters, nlPairs, nlPlainPairs},
    {"no", noLetters, noPairs, noPlainPairs},
    {"pl", plLetters, plPairs, plPlainPairs},
    {"pt", ptLetters, ptPairs, ptPlainPairs},
    {"ro", roLetters, roPairs, roPlainPairs},
    {"ru", ruLetters, ruPairs, {}},
    {"sk", skLetters, skPairs, skPlainPairs},
    {"sl", slLetters, slPairs, slPlainPairs},
    {"sr", srLetters, srPairs, {}},
    {"sv", svLetters, svPairs, svPlainPairs},
    {"th", thLetters, thPairs, {}},
    {"tr", trLetters, trPairs, trPlainPairs},
    {"uk", ukLetters, ukPairs, {}},
    {"vi", viLetters, viPairs, viPlainPairs},
    {"zh_CN", zhCNLetters, {}, {}},
    {"zh_TW", zhTWLetters, {}, {}},
};

} // namespace

std::span<const LanguageFrequencies> languageFrequencies() { return languages; }
